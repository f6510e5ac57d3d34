// The limits of a go command, and the two time limits that follow from them: no iteration begins
// after the soft limit, and the running iteration is abandoned at the hard limit.
#pragma once

#include <cstdint>

namespace brindlemoth {

// A field is 0 unless the command sets it. Times are in milliseconds.
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

// Fills the budget for the side to move and starts its clock.
void time_budget(TimeBudget& budget, const SearchLimits& limits, int side);

} // namespace brindlemoth
