// Knowledge of particular endings: a bonus for driving a bare king to the edge, and a factor that
// reduces the value of endings that are drawn or hard to win. Called by evaluate().
// Both sides must have a king.
#pragma once

#include "board/position.h"

namespace brindlemoth {

constexpr int FULL_SCALE = 256; // the factor that leaves a value as it is

// False if the bonus is certainly 0 and the factor certainly FULL_SCALE. Every known ending has a
// side without pawns, or consists of kings, pawns and two bishops.
inline bool is_known_ending(const Position& position, int phase) {
    constexpr int TWO_MINORS = 2; // their game phase
    return position.pieces[WHITE][PAWN] == 0 || position.pieces[BLACK][PAWN] == 0 ||
           phase == TWO_MINORS;
}

// Centipawns, positive for White; 0 if no pattern fits.
int endgame_bonus(const Position& position);

// The factor, from 0 to FULL_SCALE, for a value (tempo and bonus included, positive for White).
// A value above 0 makes White the strong side, any other Black.
int endgame_scale(const Position& position, int value);

} // namespace brindlemoth
