// Searches on a clock that advances with the nodes searched, so that every time is exact.
#include "platform/clock.h"
#include "search/root.h"
#include "search/transposition.h"
#include "support/captured_output.h"
#include "support/support.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

using namespace brindlemoth;

constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int SMALLEST = std::numeric_limits<int>::min();
constexpr std::int64_t CLOCK_START = std::int64_t{1} << 40;
constexpr std::uint64_t STOP_NODES = 50'000; // the clock stops a search that no limit ends

static std::uint64_t nodes_per_millisecond = 1000;
static std::uint64_t stop_nodes = std::numeric_limits<std::uint64_t>::max();
static std::vector<std::uint64_t> clock_reads; // node_count at each reading after the start

// The clock of this test program.
std::int64_t brindlemoth::tick_count() {
    if (node_count > 0)
        clock_reads.push_back(node_count);
    if (node_count >= stop_nodes)
        stop_flag = 1;
    return CLOCK_START + static_cast<std::int64_t>(node_count / nodes_per_millisecond);
}

// Fills clock_reads. Returns the node counts of the info lines, whose times must be exact.
static std::vector<std::uint64_t> searched_nodes(const char* fen, const SearchLimits& limits) {
    tt_resize(1);
    clear_search_memory();
    clock_reads.clear();
    Position position = position_from(fen);
    std::vector<std::uint64_t> counts;
    for (const std::string& line : output_of([&] { search_root(position, limits); })) {
        unsigned long long nodes, nps, time;
        const std::size_t place = line.find(" nodes ");
        if (place == std::string::npos)
            continue;
        EXPECT_EQ(std::sscanf(line.c_str() + place, " nodes %llu nps %llu time %llu", &nodes, &nps,
                              &time),
                  3);
        EXPECT_EQ(time, nodes / nodes_per_millisecond) << line;
        EXPECT_EQ(nps, time > 0 ? nodes * 1000 / time : 0) << line;
        counts.push_back(nodes);
    }
    return counts;
}

// The iterations of a search without limits say where each limit ends the same search: the soft
// limit after an iteration, the hard limit at a reading of the clock inside one.
TEST(TimeBudget, EndsEverySearchAtItsLimit) {
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
                {5000, 0, 0, 1000, 0, 3000, NO_TIME_LIMIT, NO_TIME_LIMIT},
                {5000, 0, 0, 1000, 0, 0, NO_TIME_LIMIT, NO_TIME_LIMIT, true}};
    const char* const FENS[] = {
        "r1bqkb1r/ppp2ppp/2np1n2/4p3/2B1P3/2NP1N2/PPP2PPP/R1BQK2R w - - 0 1",
        "2r3k1/1q3ppp/p3p3/1p1nP3/3P4/P4N2/1P3PPP/2R1Q1K1 b - - 0 1"};
    int soft_ends = 0, hard_ends = 0;
    stop_nodes = STOP_NODES;
    for (const int side : {WHITE, BLACK}) {
        SearchLimits unlimited{};
        unlimited.infinite = true;
        const std::vector<std::uint64_t> iterations = searched_nodes(FENS[side], unlimited);
        const std::vector<std::uint64_t> reads = clock_reads;
        for (const auto& row : ROWS) {
            SearchLimits limits{};
            limits.wtime = row.time;
            limits.winc = row.increment;
            limits.btime = 777; // of the opponent
            limits.binc = 33;
            if (side == BLACK) {
                std::swap(limits.wtime, limits.btime);
                std::swap(limits.winc, limits.binc);
            }
            limits.movestogo = row.movestogo;
            limits.movetime = row.movetime;
            limits.depth = row.depth;
            limits.nodes = row.nodes;
            limits.infinite = row.infinite;
            for (const std::uint64_t rate : {5U, 20U, 300U}) {
                nodes_per_millisecond = rate;
                const auto is_end = [&](std::uint64_t nodes) {
                    const auto time = static_cast<std::int64_t>(nodes / rate);
                    const auto found = std::find(iterations.begin(), iterations.end(), nodes);
                    if (found == iterations.end())
                        return time >= row.hard ||
                               (row.nodes > 0 && nodes >= static_cast<std::uint64_t>(row.nodes));
                    return time >= row.soft || found - iterations.begin() + 1 == row.depth;
                };
                const auto end = std::find_if(reads.begin(), reads.end() - 1, is_end);
                searched_nodes(FENS[side], limits);
                const testing::Message what = testing::Message()
                                              << FENS[side] << ", " << rate << " nodes a ms, time "
                                              << row.time << ", increment " << row.increment
                                              << ", movetime " << row.movetime;
                EXPECT_EQ(search_time.soft_limit, row.soft) << what;
                EXPECT_EQ(search_time.hard_limit, row.hard) << what;
                EXPECT_EQ(clock_reads.back(), *end) << what;
                const bool soft = std::count(iterations.begin(), iterations.end(), *end) != 0;
                (soft ? soft_ends : hard_ends) += *end != reads.back() ? 1 : 0;
            }
        }
    }
    nodes_per_millisecond = 1000;
    stop_nodes = std::numeric_limits<std::uint64_t>::max();
    EXPECT_GT(soft_ends, 20);
    EXPECT_GT(hard_ends, 10);
}
