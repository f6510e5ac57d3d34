// The moves of one node of search(), best first. The picker generates and scores them stage by
// stage, so a node that cuts off early never generates the moves of its later stages.
#pragma once

#include "board/position.h"
#include "search/history.h"
#include "search/scored_moves.h"

namespace brindlemoth {

// Not in check: STAGE_TT to STAGE_BAD_CAPTURES in this order. In check: STAGE_GEN_EVASIONS and
// STAGE_EVASIONS. Each move comes once, but those that skip_quiets suppresses.
enum : int {
    STAGE_TT,            // the hash move, before anything is generated
    STAGE_GEN_CAPTURES,  // captures and promotions
    STAGE_GOOD_CAPTURES, // those with a SEE value of at least 0; the others become bad captures
    STAGE_GEN_QUIETS,
    STAGE_QUIETS,
    STAGE_BAD_CAPTURES,
    STAGE_GEN_EVASIONS, // all moves
    STAGE_EVASIONS,
    STAGE_DONE,
};

struct MovePicker {
    int stage;
    Move tt_move; // the hash move; the stages after STAGE_TT leave it out
    int ply;
    PreviousMove previous;
    int last_see;     // SEE value of the last move, if it is a capture; or UNKNOWN_SEE
    ScoredMoves list; // of the running stage
    Move bad_captures[MAX_MOVES];
    int bad_see_values[MAX_MOVES];
    int bad_count;
    int bad_index; // of the next bad capture
};

constexpr int UNKNOWN_SEE = 0x10000;

void init_picker(MovePicker& picker, bool in_check, Move tt_move, int ply, PreviousMove previous);

// Returns the next move, or MOVE_NONE when there is none. Moves are pseudo-legal. With skip_quiets
// the quiet stages are skipped; evasions are not affected.
Move next_move(MovePicker& picker, const Position& position, bool skip_quiets);

// The SEE value of a capture that next_move() has just returned.
inline int see_of_last(const MovePicker& picker, const Position& position, Move move) {
    return picker.last_see != UNKNOWN_SEE ? picker.last_see : see(position, move);
}

} // namespace brindlemoth
