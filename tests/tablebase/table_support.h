// What the table tests share: the genuine tables, directories of their own, and all positions of
// a signature.
#pragma once

#include "support/book_file.h"
#include "tablebase/probe_board.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace brindlemoth {

// The directory of the genuine 3- and 4-men tables, or an empty text when it is not there.
std::string syzygy_directory();

// Leaves the test by name when the genuine tables are not there.
#define SKIP_WITHOUT_TABLES()                                                                      \
    if (syzygy_directory().empty())                                                                \
    GTEST_SKIP() << "no genuine tables"

// All signatures, and those of 3 men and of 4, in the order of discovery.
std::vector<std::string> all_signatures();
std::vector<std::string> three_men_signatures();
std::vector<std::string> four_men_signatures();

std::string read_file(const std::string& path);
void write_file(const std::string& path, const std::string& content);

// One kind of men of a signature.
struct Man {
    int white; // 1 or 0
    int type;
};

// The men of a signature in its own order, the first side as white.
std::vector<Man> signature_men(const std::string& signature);

// An empty board, and a man on a square of it.
ProbeBoard empty_board(bool white_to_move);
void put_man(ProbeBoard& board, Man man, int square);

// The same position for the other side, or reflected: the number's bits say how. Bit 0 is left and
// right, bits 1 and 2 are for boards without pawns, bit 3 exchanges the colours.
ProbeBoard image(const ProbeBoard& board, unsigned how);
ProbeBoard colours_exchanged(const ProbeBoard& board);

// One of every set of reflections: the board with the white king in the triangle a1-d1-d4, or with
// pawns on files a to d.
bool stands_for_its_images(const ProbeBoard& board);

// The squares of the men and the side to move as a number; different for different boards of a
// signature.
std::uint64_t packed(const ProbeBoard& board);

// Calls visit() for every sane position of the signature, White having its first side, with either
// side to move. A position in which a pawn can be captured en passant comes once more with it.
void for_all_boards(const std::string& signature,
                    const std::function<void(const ProbeBoard&)>& visit);

// A sane position of the signature with its men on random squares, either side having the first
// side's men. Now and then a pawn can be captured en passant.
ProbeBoard random_board(const std::string& signature, std::mt19937& random);

// The board as a FEN, as a position of the engine, and back.
std::string board_text(const ProbeBoard& board);
Position position_of(const ProbeBoard& board);
ProbeBoard board_of(const Position& position);
ProbeBoard board_from(const std::string& fen);

// The legal moves in the order in which the root goes through them: by man, from king to pawn.
std::vector<Move> moves_in_root_order(const Position& position);

} // namespace brindlemoth
