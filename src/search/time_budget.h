// What a go command asks for, and the two limits in milliseconds that follow from it: after the
// soft one no new iteration is begun, at the hard one the running iteration is abandoned.
#pragma once

#include <cstdint>

namespace brindlemoth {

// All zero unless the command sets it; times in milliseconds.
struct SearchLimits {
    int wtime;
    int btime;
    int winc;
    int binc;
    int movestogo;
    int movetime;
    int depth;
    int nodes;
    bool infinite;
};

struct TimeBudget {
    std::int64_t start_time; // tick_count() at the start of the search
    std::int64_t soft_limit; // milliseconds after start_time
    std::int64_t hard_limit;
};

constexpr std::int64_t NO_TIME_LIMIT = 0x3FFFFFFFFFFFFFFF;

// Of the running search, or the last one.
extern SearchLimits search_limits;
extern TimeBudget search_time;

// Fills the budget for the side to move and starts its clock.
void time_budget(TimeBudget& budget, const SearchLimits& limits, int side);

} // namespace brindlemoth
