// The recursive search: a fail-soft negamax alpha-beta with quiescence at its leaves. Both work
// on the caller's position, which they leave as they found it, and allocate nothing.
// search_root() (search/root.h) calls search() for every line of every iteration.
#pragma once

#include "board/position.h"
#include "search/score_scale.h"

namespace brindlemoth {

// What a node keeps for its children, its parent and its grandchildren.
struct SearchFrame {
    int static_eval;    // SCORE_NONE if the side to move is in check
    Move excluded_move; // left out at this node; set only during a singular probe
    Move current_move;  // last move entered from this node; MOVE_NULL in the null-move search
    Move pv[MAX_PLY];   // principal variation from this node
    int pv_length;
};

extern int sel_depth;       // greatest ply entered in the present search
extern int iteration_depth; // of the running iteration

// Moves barred at ply 0: the lines already found in this iteration.
extern Move root_excluded[MAX_MOVES];
extern int root_excluded_count;

constexpr int MAX_DEPTH = 127; // of an iteration; no node is deeper than the iteration

// Late-move reduction by remaining depth and number of moves searched; row and column 0 are 0.
extern int reductions[MAX_DEPTH + 1][256];
void init_reductions();

// Score for the side to move, which may lie outside the window. Requires depth <= MAX_DEPTH, a
// window of width 1 unless pv_node, and frames for plies ply - 2 to MAX_PLY around `frame`.
// What it returns once stop_flag is set means nothing.
int search(Position& position, SearchFrame* frame, int depth, int alpha, int beta, bool pv_node,
           int ply);

// The same for captures and promotions alone, until the position is calm. No draws, no mates.
int quiescence(Position& position, SearchFrame* frame, int alpha, int beta, int ply);

// Makes `move`, followed by the line of the next ply, the line of this frame.
void update_pv(SearchFrame* frame, Move move);

} // namespace brindlemoth
