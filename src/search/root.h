// One whole search: iterative deepening with aspiration windows, one or more lines (MultiPV), an
// info line for each finished line and exactly one bestmove line. Called by go and bench.
#pragma once

#include "board/position.h"
#include "search/search_state.h"

namespace brindlemoth {

// The number of lines to search, 1 to 256; the MultiPV option.
extern int multipv_count;

// Searches and prints. The position is unchanged afterwards. root_lines keeps the result.
void search_root(Position& position, const SearchLimits& limits);

// 0 if the time is 0.
unsigned long long nodes_per_second(std::uint64_t nodes, std::int64_t milliseconds);

// Prints the info line of a finished line; line_index counts from 0.
void print_info(int depth, int line_index, int score, const Move* pv, int pv_length);

} // namespace brindlemoth
