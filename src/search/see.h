// Static exchange evaluation (SEE): what a move wins or loses on its to-square when both sides keep
// capturing there with their least valuable piece, each free to stop. Orders captures and prunes
// moves. Knows neither pins nor the legality of king captures.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Piece values in centipawns by piece code; the first six are also those by piece type. They are
// not those of the evaluation. An empty square counts as a pawn.
constexpr int see_values[PIECE_COUNT + 1] = {100, 300, 300, 500, 900,   20000, 100,
                                             300, 300, 500, 900, 20000, 100};

// The SEE value of a pseudo-legal move of the side to move, in centipawns. A move to an empty
// square starts as if it captured a pawn.
int see(const Position& position, Move move);

// The value of what the move captures: an upper bound of see().
inline int see_bound(const Position& position, Move move) {
    return see_values[position.board[move_to(move)]];
}

} // namespace brindlemoth
