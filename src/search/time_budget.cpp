#include "search/time_budget.h"

#include "board/types.h"
#include "platform/clock.h"

#include <algorithm>

namespace brindlemoth {

SearchLimits search_limits;
TimeBudget search_time;

namespace {

constexpr int MOVE_OVERHEAD = 10;  // kept back from a fixed time for the move
constexpr int CLOCK_RESERVE = 100; // kept back from the clock
constexpr int UNKNOWN_CLOCK = 100; // what a missing or run-out clock counts as
constexpr int LEAST_USABLE = 10;
constexpr int LEAST_SOFT_LIMIT = 5;
constexpr int LEAST_HARD_LIMIT = 10;

// Moves that the time left is shared among when the command does not say.
int expected_moves(int usable) {
    if (usable < 1000)
        return 60;
    if (usable < 5000)
        return 40;
    if (usable < 15000)
        return 30;
    return 25;
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
    const int usable = std::max(time - CLOCK_RESERVE, LEAST_USABLE);
    const std::int64_t moves = limits.movestogo > 0 ? limits.movestogo : expected_moves(usable);
    const std::int64_t target = usable / moves + std::int64_t{increment} * 3 / 4;
    const std::int64_t cap = static_cast<std::int64_t>(usable) * 2 / 5;
    const std::int64_t hard = std::min(target * 3, cap);
    const std::int64_t soft = std::min(target, hard);
    budget.soft_limit = std::max<std::int64_t>(soft, LEAST_SOFT_LIMIT);
    budget.hard_limit = std::max<std::int64_t>(hard, LEAST_HARD_LIMIT);
}

} // namespace brindlemoth
