// One whole search: iterative deepening with aspiration windows, several lines if asked for, an
// info line for each finished line and exactly one bestmove line. Called by go and bench.
#pragma once

#include "search/search.h"
#include "search/time_budget.h"

namespace brindlemoth {

struct RootLine {
    Move move; // first move of the line
    int score;
    Move pv[MAX_PLY];
    int pv_length; // 0 while the line has no result
};

// Line i is the i-th best: found with the lines before it barred.
extern RootLine root_lines[MAX_MOVES];

// How many lines are asked for, 1 to 256; the MultiPV option.
extern int multipv_count;

// Searches and prints. The position is unchanged afterwards; node_count tells the work done.
void search_root(Position& position, const SearchLimits& limits);

// Prints the info line of a finished line; line_index counts from 0.
void print_info(int depth, int line_index, int score, const Move* pv, int pv_length);

} // namespace brindlemoth
