// Playing a move on a position in place and taking it back exactly. The innermost operations of
// search and perft: they allocate nothing and test nothing.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Where the rook goes in castling, by colour and flag.
struct RookMove {
    int from;
    int to;
};

constexpr RookMove castling_rook_move(int colour, int flag) {
    constexpr RookMove MOVES[2][2] = {{{H1, F1}, {A1, D1}}, {{H8, F8}, {A8, D8}}};
    return MOVES[colour][flag - FLAG_SHORT_CASTLING];
}

// Plays a pseudo-legal move. Requires undo_count < MAX_UNDO.
void make_move(Position& position, Move move);
// Takes back the last move made, which must be `move`.
void unmake_move(Position& position, Move move);

// Passes the turn, and takes that back.
void make_null_move(Position& position);
void unmake_null_move(Position& position);

} // namespace brindlemoth
