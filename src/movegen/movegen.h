// Pseudo-legal move generation. Every generator appends to a plain array of Move and returns the
// place just behind the last move written, so that calls chain. The order of emission is part of
// the behaviour: move ordering resolves equal scores by place in the list.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Whether ep_square is one that a capture can land on: empty, with an enemy pawn in front of it. A
// FEN may name any square.
bool ep_capture_possible(const Position& position);

// The generators. `out` has room for MAX_MOVES moves; any surplus is dropped.
Move* generate_pseudo_legal(const Position& position, Move* out);
// Captures, then promoting pushes.
Move* generate_captures(const Position& position, Move* out);
// What generate_captures leaves: pushes, piece moves to empty squares, castling.
Move* generate_quiets(const Position& position, Move* out);

// The number of legal moves among those of generate_pseudo_legal, mostly without writing them.
int count_legal(const Position& position);

} // namespace brindlemoth
