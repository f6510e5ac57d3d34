// Static exchange evaluation: what a move wins or loses on its to-square when both sides keep
// capturing there with their least valuable piece, each free to stop. Orders captures and filters
// moves in pruning. Knows neither pins nor the legality of king captures.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Exchange values by piece type, in centipawns. They are not those of the evaluation.
constexpr int see_values[6] = {100, 300, 300, 500, 900, 20000};
// The same by piece code. An empty square counts as a pawn.
constexpr int see_piece_values[PIECE_COUNT + 1] = {100, 300, 300, 500, 900,   20000, 100,
                                                   300, 300, 500, 900, 20000, 100};

// The gain in centipawns for the side to move, which plays the pseudo-legal move. A move to an
// empty square starts as if it took a pawn. The position is only read.
int see(const Position& position, Move move);

// What the move takes: see() is never more.
inline int see_bound(const Position& position, Move move) {
    return see_piece_values[position.board[move_to(move)]];
}

} // namespace brindlemoth
