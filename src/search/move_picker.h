// Hands out the moves of a node one at a time, stage by stage, so that a node that cuts off early
// never generates or scores the moves it did not need. A local record of search().
#pragma once

#include "board/position.h"
#include "search/history.h"

namespace brindlemoth {

enum : int {
    STAGE_TT,
    STAGE_GEN_CAPTURES,
    STAGE_GOOD_CAPTURES,
    STAGE_GEN_QUIETS,
    STAGE_QUIETS,
    STAGE_BAD_CAPTURES,
    STAGE_GEN_EVASIONS,
    STAGE_EVASIONS,
    STAGE_DONE,
};

struct MovePicker {
    int stage; // STAGE_TT, or STAGE_GEN_EVASIONS in check
    Move tt_move;
    int ply;
    PreviousMove previous;
    // The list of the running stage; set by the stages themselves.
    Move moves[MAX_MOVES];
    int scores[MAX_MOVES];
    int count;
    int index; // next entry to hand out
    // Captures that lose material, put off until after the quiet moves.
    Move bad_captures[MAX_MOVES];
    int bad_count;
    int bad_index;
};

void init_picker(MovePicker& picker, bool in_check, Move tt_move, int ply, PreviousMove previous);

// The next candidate, or MOVE_NONE when there is none. Candidates are pseudo-legal. With
// skip_quiets no quiet move is handed out any more (evasions are not affected).
Move next_move(MovePicker& picker, const Position& position, bool skip_quiets);

// The index from start to count - 1 of the highest score, the lowest index among equals.
inline int pick_best_index(const int* scores, int start, int count) {
    int best = start;
    for (int i = start + 1; i < count; ++i)
        if (scores[i] > scores[best])
            best = i;
    return best;
}

// Ordering score of a quiet move: history, lifted for killers and the counter move.
int quiet_score(const Position& position, Move move, int ply, PreviousMove previous);

} // namespace brindlemoth
