#include "board/types.h"
#include "search/time_budget.h"

#include <gtest/gtest.h>
#include <limits>
#include <utility>

namespace brindlemoth {
namespace {

constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int SMALLEST = std::numeric_limits<int>::min();

SearchLimits clock_of(int time, int increment, int movestogo = 0) {
    SearchLimits limits{};
    limits.wtime = time;
    limits.winc = increment;
    limits.movestogo = movestogo;
    return limits;
}

TEST(TimeBudget, ClockAndIncrement) {
    const struct {
        int time, increment, movestogo;
        std::int64_t soft, hard;
    } ROWS[] = {{60000, 1000, 0, 3146, 9438},
                {10000, 0, 0, 330, 990},
                {1000, 0, 0, 15, 45},
                {50, 0, 0, 5, 10},
                {0, 0, 0, 5, 10},
                {10000, 0, 1, 3960, 3960},
                {1000, 1000, 0, 360, 360},
                {10000, 0, 50, 198, 594},
                // The edges of the bands: 1,000, 5,000 and 15,000 ms usable.
                {1099, 0, 0, 16, 48},
                {1100, 0, 0, 25, 75},
                {5099, 0, 0, 124, 372},
                {5100, 0, 0, 166, 498},
                {15099, 0, 0, 499, 1497},
                {15100, 0, 0, 600, 1800},
                {1000, -10000, 0, 5, 10},
                // Truncation: 900 / 60 + 5 * 3 / 4.
                {1000, 5, 0, 18, 54},
                {LARGEST, 0, 0, 85899341, 257698023},
                {LARGEST, 0, 1, 858993418, 858993418},
                {LARGEST, 0, LARGEST, 5, 10},
                // Three increments are more than 32 bits hold.
                {1000, LARGEST / 2, 0, 360, 360},
                {1000, SMALLEST, 0, 5, 10}};
    for (const auto& row : ROWS) {
        SearchLimits limits = clock_of(row.time, row.increment, row.movestogo);
        for (const int side : {WHITE, BLACK}) {
            TimeBudget budget{};
            time_budget(budget, limits, side);
            EXPECT_EQ(budget.soft_limit, row.soft) << row.time << ' ' << row.increment;
            EXPECT_EQ(budget.hard_limit, row.hard) << row.time << ' ' << row.increment;
            std::swap(limits.wtime, limits.btime);
            std::swap(limits.winc, limits.binc);
        }
    }
}

TEST(TimeBudget, OtherLimitsComeBeforeTheClock) {
    const struct {
        const char* what;
        int depth, nodes;
        bool infinite;
        int movetime;
        std::int64_t limit;
    } ROWS[] = {{"movetime", 0, 0, false, 1000, 990},
                {"short movetime", 0, 0, false, 10, 0},
                {"shortest movetime", 0, 0, false, 1, -9},
                {"depth", 3, 0, false, 1000, NO_TIME_LIMIT},
                {"nodes", 0, 1, false, 1000, NO_TIME_LIMIT},
                {"infinite", 0, 0, true, 1000, NO_TIME_LIMIT},
                {"negative depth and nodes", -1, -1, false, 1000, 990}};
    for (const auto& row : ROWS) {
        SearchLimits limits = clock_of(5000, 0);
        limits.depth = row.depth;
        limits.nodes = row.nodes;
        limits.infinite = row.infinite;
        limits.movetime = row.movetime;
        TimeBudget budget{};
        time_budget(budget, limits, WHITE);
        EXPECT_EQ(budget.soft_limit, row.limit) << row.what;
        EXPECT_EQ(budget.hard_limit, row.limit) << row.what;
    }
}

} // namespace
} // namespace brindlemoth
