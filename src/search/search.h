// The recursive search: a fail-soft negamax alpha-beta with quiescence at its leaves. Both work
// on the caller's position, which they leave as they found it. search_root() (search/root.h) calls
// search() for every line of every iteration.
#pragma once

#include "board/position.h"
#include "search/search_state.h"

namespace brindlemoth {

// What a node keeps for its children, its parent and its grandchildren.
struct SearchFrame {
    int static_eval;    // SCORE_NONE if the side to move is in check
    Move excluded_move; // the move that a singular probe skips; MOVE_NONE in any other node
    // The last move that the move loop made, or MOVE_NULL in the null-move search. ProbCut does not
    // set it, so a node below its captures takes the last move of another node as the previous one.
    // Setting it would change the tree.
    Move current_move;
    Move pv[MAX_PLY]; // principal variation from this node
    int pv_length;
};

constexpr int MAX_DEPTH = 127; // of an iteration; no node is deeper than the iteration

// Fills the late-move reductions. Called once, at start-up.
void init_reductions();

// Score for the side to move, which may lie outside the window. Requires depth <= MAX_DEPTH, a
// window of width 1 unless pv_node, and frames for plies ply - 2 to MAX_PLY around `frame`.
// What it returns once stop_flag is set means nothing.
int search(Position& position, SearchFrame* frame, int depth, int alpha, int beta, bool pv_node,
           int ply);

// The same for captures and promotions alone, until no good one is left. It finds no draws and no
// mates.
int quiescence(Position& position, SearchFrame* frame, int alpha, int beta, int ply);

// Makes `move` and the line of the next ply the line of this frame.
void update_pv(SearchFrame* frame, Move move);

} // namespace brindlemoth
