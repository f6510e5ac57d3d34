// The watch that a running search keeps: it counts its nodes, and looks at clock, node limit and
// input now and then. What it sees there may set stop_flag (input/poll_input.h).
#pragma once

#include <cstdint>

namespace brindlemoth {

// Nodes between two ordinary looks, which search() takes from iteration 2 on.
constexpr std::uint64_t WATCH_INTERVAL = 1024;
// Nodes after which a look is overdue, whatever the iteration: no position of a game has a
// quiescence that long, but a board crowded with queens has.
constexpr std::uint64_t EMERGENCY_INTERVAL = 1'048'576;

extern std::uint64_t node_count;     // of the present search
extern std::uint64_t emergency_look; // the node_count at which a look is overdue

// At the start of a search: no node has been counted.
void start_watch();

// A look at clock, node limit and input.
void watch_all();
// A look at the input alone, between two iterations.
void watch_input();

// Whoever enters a node counts it.
inline void count_node() {
    if (++node_count >= emergency_look) [[unlikely]]
        watch_all();
}

} // namespace brindlemoth
