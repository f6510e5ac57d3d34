// Playing a move on a position in place and taking it back exactly. The innermost operations of
// search and perft: they allocate nothing and test nothing.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Plays a pseudo-legal move. Requires undo_count < MAX_UNDO.
void make_move(Position& position, Move move);
// Takes back the last move made, which must be `move`.
void unmake_move(Position& position, Move move);

// Passes the turn, and takes that back.
void make_null_move(Position& position);
void unmake_null_move(Position& position);

} // namespace brindlemoth
