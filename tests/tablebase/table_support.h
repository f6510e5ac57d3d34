// What the table tests share: signatures and boards.
#pragma once

#include "support/book_file.h"
#include "tablebase/probe_board.h"

#include <random>
#include <string>
#include <vector>

namespace brindlemoth {

// The directory of published tables of 3 and 4 men, or an empty text when it is not there.
std::string published_tables();

// All signatures, and those of so many men, in the order of discovery.
std::vector<std::string> all_signatures();
std::vector<std::string> signatures_of(std::size_t men);

std::string read_file(const std::string& path);

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

// The board with each en-passant square that a double step of the side not to move can have left
// for a capturer.
std::vector<ProbeBoard> en_passant_boards(const ProbeBoard& board);

// A sane position of the signature with its men on random squares, either side having the first
// side's men. Now and then a pawn can be captured en passant.
ProbeBoard random_board(const std::string& signature, std::mt19937& random);

// The board as a FEN, and a board from a position of the engine or a FEN.
std::string board_text(const ProbeBoard& board);
ProbeBoard board_of(const Position& position);
ProbeBoard board_from(const std::string& fen);

// The legal moves in the order in which the root goes through them: by man, from king to pawn.
std::vector<Move> moves_in_root_order(const Position& position);

} // namespace brindlemoth
