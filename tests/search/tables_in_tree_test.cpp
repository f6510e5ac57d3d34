// Endgame tables inside the search: which nodes probe them, and how a node uses the result. The
// tables themselves are tested in tests/tablebase.
#include "search/search.h"
#include "search/transposition.h"
#include "support/support.h"
#include "tablebase/syzygy.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace brindlemoth;

constexpr int PLY = 10;
constexpr int NO_PROBE = -1;

class TablesInTree : public testing::Test {
protected:
    void SetUp() override {
        syzygy_init(tables_directory().c_str());
        ASSERT_EQ(syzygy_max_men, 4U);
        syzygy_probe_limit = static_cast<std::int32_t>(syzygy_max_men);
        tt_resize(1);
        clear_search_memory();
        std::memset(static_cast<void*>(frames), 0, sizeof frames);
    }
    void TearDown() override {
        syzygy_init("");
        syzygy_probe_limit = 0;
        tt_resize(64);
        clear_search_memory();
    }

    SearchFrame frames[MAX_PLY + 4];
};

const char* const WON = "8/8/8/4k3/8/8/8/R3K3 w - - 0 1";
const char* const LOST = "8/8/8/4k3/8/8/8/R3K3 b - - 0 1";
const char* const DRAWN = "8/8/8/4k3/4p3/8/8/4K3 b - - 0 1";

TEST_F(TablesInTree, SomeNodesProbeAndStoreTheResult) {
    const struct {
        const char* name;
        const char* fen;
        int limit, alpha, score;
        int bound = NO_PROBE;
        bool pv_node = false, excluded = false;
    } ROWS[] = {
        {"won", WON, 4, 0, 30871, BOUND_LOWER},
        {"won, as many men as the limit", WON, 3, TB_WIN_SCORE - 1, TB_WIN_SCORE, BOUND_LOWER},
        {"won, where only a mate is more", WON, 4, TB_WIN_SCORE, 0},
        {"lost", LOST, 4, 0, -TB_WIN_SCORE, BOUND_UPPER},
        {"lost, just not above alpha", LOST, 4, -TB_WIN_SCORE, -TB_WIN_SCORE, BOUND_UPPER},
        {"drawn", DRAWN, 4, 0, DRAW_SCORE, BOUND_EXACT},
        {"principal variation", WON, 4, -50, 0, NO_PROBE, true, false},
        {"singular probe", WON, 4, -50, 0, NO_PROBE, false, true},
        {"clock running", "8/8/8/4k3/8/8/8/R3K3 w - - 1 1", 4, -50, 0},
        {"castling right", "8/8/8/4k3/8/8/8/R3K3 w Q - 0 1", 4, -50, 0},
        {"more men than the limit", "8/8/8/4k3/8/8/8/RR2K3 w - - 0 1", 3, -50, 0},
        {"no table for it", "8/8/8/4k3/8/8/8/RRR1K3 w - - 0 1", 7, -50, 0},
    };
    for (const auto& row : ROWS) {
        SCOPED_TRACE(row.name);
        tt_clear();
        begin_search({}, WHITE);
        syzygy_probe_limit = row.limit;
        Position position = position_from(row.fen);
        SearchFrame* const frame = frames + 2 + PLY;
        frame->excluded_move = row.excluded ? make_move_code(A1, A2, FLAG_QUIET) : MOVE_NONE;
        const int beta = row.alpha + (row.pv_node ? 100 : 1);
        const int score = search(position, frame, 1, row.alpha, beta, row.pv_node, PLY);
        frame->excluded_move = MOVE_NONE;
        const TTEntry* const entry = tt_probe(position.key);
        if (row.bound == NO_PROBE) {
            EXPECT_NE(node_count, 2U);
            continue;
        }
        EXPECT_EQ(score, row.score);
        EXPECT_EQ(node_count, 2U) << "the node and the probe";
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->score, score_to_table(row.score, PLY));
        EXPECT_EQ(entry->bound, row.bound);
        EXPECT_EQ(entry->depth, 1);
        EXPECT_EQ(entry->move, MOVE_NONE);
    }
}
