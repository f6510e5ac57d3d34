// What the search learns from quiet moves that cut off, to order quiet moves and to reduce them.
// The tables themselves are part of the state of the search (search/search_state.h).
#pragma once

#include "board/position.h"
#include "search/search_state.h"

namespace brindlemoth {

// The move that led to a node. Without one (root, null move) piece is EMPTY_SQUARE and to is 0.
struct PreviousMove {
    int piece; // what stands on its to-square now
    int to;
};

inline PreviousMove previous_move_of(const Position& position, Move move) {
    if (move == MOVE_NONE || move == MOVE_NULL)
        return {EMPTY_SQUARE, 0};
    return {position.board[move_to(move)], move_to(move)};
}

// The history of a quiet move of `piece`: butterfly history plus, where there is a previous move,
// continuation history.
inline int history_score(int side, int piece, Move move, PreviousMove previous) {
    return butterfly_history[side][move_squares(move)] +
           continuation_history[previous.piece][previous.to][piece][move_to(move)];
}

// Records a cutoff by the quiet move `best`: it becomes killer and countermove, its history rises,
// and that of the other `quiets`, which were searched before it, falls. Requires the position in
// which they were played.
void record_quiet_cutoff(const Position& position, Move best, const Move* quiets, int quiet_count,
                         int depth, int ply, PreviousMove previous);

} // namespace brindlemoth
