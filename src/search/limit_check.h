// The checks of a running search for its limits: clock, node limit and input. A check that finds a
// limit reached sets stop_flag.
#pragma once

#include "search/search_state.h"

namespace brindlemoth {

// From iteration 2 on, search() checks the limits when node_count is a multiple of this.
constexpr std::uint64_t LIMIT_CHECK_INTERVAL = 1024;
// So many nodes after the last check any node forces one, also in iteration 1 and in quiescence.
// Positions of a game never get there, but boards crowded with queens do.
constexpr std::uint64_t FORCED_CHECK_INTERVAL = 1'048'576;

// Checks the clock, the node limit and the input.
void check_limits();
// Checks the input alone: between two iterations.
void check_input();

// Counts a node. Every node calls this once on entry.
inline void count_node() {
    if (++node_count >= next_forced_check) [[unlikely]]
        check_limits();
}

} // namespace brindlemoth
