#include "board/types.h"
#include "search/time_budget.h"

#include <gtest/gtest.h>
#include <limits>
#include <utility>

namespace brindlemoth {
namespace {

constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int SMALLEST = std::numeric_limits<int>::min();

TEST(TimeBudget, Limits) {
    const struct {
        int time, increment, movestogo, movetime, depth, nodes;
        std::int64_t soft, hard;
        bool infinite = false;
    } ROWS[] = {{60000, 1000, 0, 0, 0, 0, 3146, 9438},
                {0, 0, 0, 0, 0, 0, 5, 10},
                {10000, 0, 1, 0, 0, 0, 3960, 3960},
                // The edges of the bands: 1,000, 5,000 and 15,000 ms usable.
                {1099, 0, 0, 0, 0, 0, 16, 48},
                {1100, 0, 0, 0, 0, 0, 25, 75},
                {5099, 0, 0, 0, 0, 0, 124, 372},
                {5100, 0, 0, 0, 0, 0, 166, 498},
                {15099, 0, 0, 0, 0, 0, 499, 1497},
                {15100, 0, 0, 0, 0, 0, 600, 1800},
                // Truncation: 900 / 60 + 5 * 3 / 4.
                {1000, 5, 0, 0, 0, 0, 18, 54},
                {LARGEST, 0, LARGEST, 0, 0, 0, 5, 10},
                // Three increments are more than 32 bits hold.
                {1000, LARGEST / 2, 0, 0, 0, 0, 360, 360},
                {1000, SMALLEST, 0, 0, 0, 0, 5, 10},
                // Other limits come before the clock.
                {5000, 0, 0, 1000, 0, 0, 990, 990},
                {5000, 0, 0, 1, 0, 0, -9, -9},
                {5000, 0, 0, 1000, -1, -1, 990, 990},
                {5000, 0, 0, 1000, 1, 0, NO_TIME_LIMIT, NO_TIME_LIMIT},
                {5000, 0, 0, 1000, 0, 1, NO_TIME_LIMIT, NO_TIME_LIMIT},
                {5000, 0, 0, 1000, 0, 0, NO_TIME_LIMIT, NO_TIME_LIMIT, true}};
    for (const auto& row : ROWS) {
        SearchLimits limits{};
        limits.wtime = row.time;
        limits.winc = row.increment;
        limits.movestogo = row.movestogo;
        limits.movetime = row.movetime;
        limits.depth = row.depth;
        limits.nodes = row.nodes;
        limits.infinite = row.infinite;
        for (const int side : {WHITE, BLACK}) {
            TimeBudget budget{};
            time_budget(budget, limits, side);
            EXPECT_EQ(budget.soft_limit, row.soft) << &row - ROWS;
            EXPECT_EQ(budget.hard_limit, row.hard) << &row - ROWS;
            std::swap(limits.wtime, limits.btime);
            std::swap(limits.winc, limits.binc);
        }
    }
}

} // namespace
} // namespace brindlemoth
