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

// All signatures of 3 men and of 4, in the order of discovery.
const std::vector<std::string>& three_men_signatures();
const std::vector<std::string>& four_men_signatures();

std::string read_file(const std::string& path);
void write_file(const std::string& path, const std::string& content);
// A file of that many zero bytes.
void write_blank_file(const std::string& path, std::size_t size);

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

// The same position with the colours exchanged and the board turned upside down.
ProbeBoard colours_exchanged(const ProbeBoard& board);

// Calls visit() for every sane position of the signature, White having its first side, with either
// side to move. A position in which a pawn can be captured en passant comes once more with it.
void for_all_boards(const std::string& signature,
                    const std::function<void(const ProbeBoard&)>& visit);

// A sane position of the signature with its men on random squares, either side having the first
// side's men. Now and then a pawn can be captured en passant.
ProbeBoard random_board(const std::string& signature, std::mt19937& random);

// The same as a FEN, and as a position of the engine.
std::string board_fen(const ProbeBoard& board);
Position position_of(const ProbeBoard& board);

// The board as text for messages.
std::string board_text(const ProbeBoard& board);

} // namespace brindlemoth
