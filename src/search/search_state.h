// The state of the running search, or of the last one: all that a search writes, except the entries
// of the transposition table. begin_search() resets it, and it keeps its values until the next
// call.
#pragma once

#include "board/types.h"
#include "input/poll_input.h" // stop_flag: set by polls and limit checks, it ends the search
#include "search/score_scale.h"
#include "search/time_budget.h"

#include <cstdint>

namespace brindlemoth {

// Written by begin_search() alone.
inline SearchLimits search_limits; // what the go command asked for
inline TimeBudget search_time;     // start of the search and its time limits
inline std::uint8_t tt_generation; // marks the entries of this search; counts the searches

// Written by every node; see count_node() in search/limit_check.h.
inline std::uint64_t node_count;        // calls of search() and quiescence(), probe results
inline std::uint64_t next_forced_check; // the node_count that forces a limit check
inline int sel_depth;                   // greatest ply entered

// Written by search_root().
inline int iteration_depth; // depth of the running iteration; 0 before the first one

struct RootLine {
    Move move; // first move of the line
    int score;
    Move pv[MAX_PLY];
    int pv_length; // 0 while the line has no result
};
inline RootLine root_lines[MAX_MOVES]; // line i is the i-th best: found without the moves before it
inline Move root_excluded[MAX_MOVES];  // those moves: search() skips them at ply 0
inline int root_excluded_count;

// Written after each cutoff by a quiet move. begin_search() clears the killers, halves the two
// history tables toward zero and keeps the countermoves. Piece indices are codes of the board;
// EMPTY_SQUARE stands for no previous move, and nothing is written there.
inline Move killers[MAX_PLY][2];                // by ply; slot 0 the newer
inline Move countermoves[PIECE_COUNT + 1][64];  // by previous piece and its to-square
inline std::int16_t butterfly_history[2][4096]; // by side and move_squares()
// By previous piece, its to-square, piece, to-square.
inline std::int16_t continuation_history[PIECE_COUNT + 1][64][PIECE_COUNT][64];

// Resets the state for a search with these limits and starts its clock. `side` is to move.
void begin_search(const SearchLimits& limits, int side);

// Forgets all searches: empties the transposition table and the tables of the quiet moves, and sets
// tt_generation to 0.
void clear_search_memory();

} // namespace brindlemoth
