// Knowledge of particular endings: a bonus for driving a bare king to the edge, and the factor
// that shrinks the value of endings that are drawn or hard to win. Called by evaluate().
// Both sides must have a king.
#pragma once

#include "board/position.h"

namespace brindlemoth {

constexpr int FULL_SCALE = 256; // the factor of an ending about which nothing is known

// Centipawns, positive for White; 0 when no pattern fits.
int endgame_bonus(const Position& position);

// The factor, from 0 to FULL_SCALE, for a value (tempo and bonus included, positive for White).
// A value above 0 makes White the strong side, any other Black.
int endgame_scale(const Position& position, int value);

// Rook and pawn against rook: 0 for two drawn patterns, FULL_SCALE for all else.
int krpkr_scale(const Position& position, int strong);

} // namespace brindlemoth
