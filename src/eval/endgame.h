// Knowledge of particular endings: a bonus for driving a bare king to the edge, and the factor
// that shrinks the value of endings that are drawn or hard to win. Called by evaluate().
// Both sides must have a king.
#pragma once

#include "board/position.h"

namespace brindlemoth {

constexpr int FULL_SCALE = 256; // the factor of an ending about which nothing is known

// Whether the bonus can be other than 0, or the factor other than FULL_SCALE: all that is known
// of endings is about a side without pawns, or about two bishops and nothing else beside pawns.
inline bool is_known_ending(const Position& position, int phase) {
    constexpr int TWO_MINORS = 2; // their game phase
    return position.pieces[WHITE][PAWN] == 0 || position.pieces[BLACK][PAWN] == 0 ||
           phase == TWO_MINORS;
}

// Centipawns, positive for White; 0 when no pattern fits.
int endgame_bonus(const Position& position);

// The factor, from 0 to FULL_SCALE, for a value (tempo and bonus included, positive for White).
// A value above 0 makes White the strong side, any other Black.
int endgame_scale(const Position& position, int value);

// Rook and pawn against rook: 0 for two drawn patterns, FULL_SCALE for all else.
int krpkr_scale(const Position& position, int strong);

} // namespace brindlemoth
