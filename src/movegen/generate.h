// Pseudo-legal move generation. Each generator writes to an array and returns the place behind the
// last move. The order of the moves is part of the behaviour: of moves with equal scores, the
// search takes the earlier one first.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Whether ep_square is an empty square with an enemy pawn in front of it. A FEN may name any
// square.
bool ep_capture_possible(const Position& position);

// `out` has room for MAX_MOVES moves. Further moves are dropped.
Move* generate_pseudo_legal(const Position& position, Move* out);
// Captures, then promoting pushes.
Move* generate_captures(const Position& position, Move* out);
// All other moves: pushes that do not promote, piece moves to empty squares, castling.
Move* generate_quiets(const Position& position, Move* out);

// The number of legal moves. It counts sets of moves, without a list of them in most positions.
int count_legal(const Position& position);

} // namespace brindlemoth
