// Hands out the moves of a node one at a time, stage by stage, so that a node that cuts off early
// never generates or scores the moves it did not need. A local record of search().
#pragma once

#include "board/position.h"
#include "search/history.h"
#include "search/scored_moves.h"

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
    // What the exchange on its square is worth, of the capture handed out last; see(). Of the table
    // move it is not known.
    int exchange;
    ScoredMoves list; // of the running stage; set by the stages themselves
    // Captures that lose material, put off until after the quiet moves, and what they lose.
    Move bad_captures[MAX_MOVES];
    int bad_exchanges[MAX_MOVES];
    int bad_count;
    int bad_index;
};

constexpr int UNKNOWN_EXCHANGE = 0x10000;

void init_picker(MovePicker& picker, bool in_check, Move tt_move, int ply, PreviousMove previous);

// The next candidate, or MOVE_NONE when there is none. Candidates are pseudo-legal. With
// skip_quiets no quiet move is handed out any more (evasions are not affected).
Move next_move(MovePicker& picker, const Position& position, bool skip_quiets);

// What the exchange of a capture is worth that next_move() has just handed out.
inline int exchange_of(const MovePicker& picker, const Position& position, Move move) {
    return picker.exchange != UNKNOWN_EXCHANGE ? picker.exchange : see(position, move);
}

// Ordering score of a quiet move: history, lifted for killers and the counter move.
int quiet_score(const Position& position, Move move, int ply, PreviousMove previous);

} // namespace brindlemoth
