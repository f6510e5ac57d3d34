// Making a move on a position and unmaking it, which restores the position exactly. Nothing tests
// whether the move is possible.
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
