#include "search/time_budget.h"

#include "board/types.h"
#include "platform/clock.h"

#include <algorithm>

namespace brindlemoth {

namespace {

// Milliseconds.
constexpr int MOVE_OVERHEAD = 10;  // subtracted from a fixed time for the move
constexpr int CLOCK_RESERVE = 100; // subtracted from the clock
constexpr int UNKNOWN_CLOCK = 100; // the clock, if the command gives none or it has run out
constexpr int MIN_USABLE = 10;
constexpr int MIN_SOFT_LIMIT = 5;
constexpr int MIN_HARD_LIMIT = 10;

constexpr int HARD_FACTOR = 3; // the hard limit is so many times the target

// The number of moves for which this usable time, in milliseconds, has to last if the command does
// not give the number.
int expected_moves(int usable) {
    return usable < 1000 ? 60 : usable < 5000 ? 40 : usable < 15000 ? 30 : 25;
}

} // namespace

void time_budget(TimeBudget& budget, const SearchLimits& limits, int side) {
    budget.start_time = tick_count();
    if (limits.infinite || limits.depth > 0 || limits.nodes > 0) {
        budget.soft_limit = NO_TIME_LIMIT;
        budget.hard_limit = NO_TIME_LIMIT;
        return;
    }
    if (limits.movetime > 0) {
        budget.soft_limit = limits.movetime - MOVE_OVERHEAD;
        budget.hard_limit = limits.movetime - MOVE_OVERHEAD;
        return;
    }

    int time = side == WHITE ? limits.wtime : limits.btime;
    const int increment = side == WHITE ? limits.winc : limits.binc;
    if (time <= 0)
        time = UNKNOWN_CLOCK;
    const int usable = std::max(time - CLOCK_RESERVE, MIN_USABLE);
    const std::int64_t moves = limits.movestogo > 0 ? limits.movestogo : expected_moves(usable);
    // A share of the clock and three quarters of the increment; at most two fifths of the clock.
    const std::int64_t target = usable / moves + std::int64_t{increment} * 3 / 4;
    const std::int64_t cap = std::int64_t{usable} * 2 / 5;
    const std::int64_t hard = std::min(target * HARD_FACTOR, cap);
    const std::int64_t soft = std::min(target, hard);
    budget.soft_limit = std::max<std::int64_t>(soft, MIN_SOFT_LIMIT);
    budget.hard_limit = std::max<std::int64_t>(hard, MIN_HARD_LIMIT);
}

} // namespace brindlemoth
