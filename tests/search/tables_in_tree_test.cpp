// Endgame tables inside the search: which nodes ask them, and what an answer does to the node. The
// tables themselves are tested in tests/tablebase.
#include "search/history.h"
#include "search/root.h"
#include "search/transposition.h"
#include "search/watch.h"
#include "support/support.h"
#include "tablebase/syzygy.h"

#include <cstring>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

constexpr int PLY = 10;

class TablesInTree : public testing::Test {
protected:
    void SetUp() override {
        const std::string tables = shared_directory() + "/syzygy";
        if (shared_directory().empty() || !syzygy_init(tables.c_str()) || syzygy_max_men < 4)
            GTEST_SKIP() << "needs tables of 3 and 4 men";
        syzygy_probe_limit = static_cast<std::int32_t>(syzygy_max_men);
        tt_resize(1);
        clear_history();
        std::memset(static_cast<void*>(frames), 0, sizeof frames);
        iteration_depth = 1;
        start_watch();
        root_excluded_count = 0;
    }
    void TearDown() override {
        syzygy_init("");
        syzygy_probe_limit = 0;
        tt_resize(64);
        clear_history();
    }

    // A node of depth 3 with a null window.
    int node(Position& position, int alpha) {
        return search(position, frames + 2 + PLY, 3, alpha, alpha + 1, false, PLY);
    }

    SearchFrame frames[MAX_PLY + 4];
};

const char* const WON = "8/8/8/4k3/8/8/8/R3K3 w - - 0 1";
const char* const LOST = "8/8/8/4k3/8/8/8/R3K3 b - - 0 1";
const char* const DRAWN = "8/8/8/4k3/4p3/8/8/4K3 b - - 0 1";

TEST_F(TablesInTree, AnAnswerThatSettlesTheNodeIsStored) {
    struct Row {
        const char* fen;
        int alpha, score;
        int stored; // in table form
        int bound;
    };
    const Row rows[] = {{WON, 0, TB_WIN_SCORE, TB_WIN_SCORE + PLY, BOUND_LOWER},
                        {WON, TB_WIN_SCORE - 1, TB_WIN_SCORE, TB_WIN_SCORE + PLY, BOUND_LOWER},
                        {LOST, 0, -TB_WIN_SCORE, -TB_WIN_SCORE - PLY, BOUND_UPPER},
                        {LOST, -TB_WIN_SCORE, -TB_WIN_SCORE, -TB_WIN_SCORE - PLY, BOUND_UPPER},
                        {DRAWN, 0, DRAW_SCORE, DRAW_SCORE, BOUND_EXACT},
                        {DRAWN, -500, DRAW_SCORE, DRAW_SCORE, BOUND_EXACT}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.fen << " alpha " << row.alpha);
        tt_clear();
        start_watch();
        Position position = position_from(row.fen);
        EXPECT_EQ(node(position, row.alpha), row.score);
        EXPECT_EQ(node_count, 2U) << "the node and the answer";
        const TTEntry* const entry = tt_probe(position.key);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->score, row.stored);
        EXPECT_EQ(entry->bound, row.bound);
        EXPECT_EQ(entry->depth, 3);
        EXPECT_EQ(entry->move, MOVE_NONE);
    }
}

TEST_F(TablesInTree, OnlySomeNodesAsk) {
    struct Row {
        const char* name;
        const char* fen;
        int limit;
        bool pv_node, excluded, asks;
    };
    const Row rows[] = {
        {"plain", WON, 4, false, false, true},
        {"principal variation", WON, 4, true, false, false},
        {"singular probe", WON, 4, false, true, false},
        {"clock running", "8/8/8/4k3/8/8/8/R3K3 w - - 1 1", 4, false, false, false},
        {"castling right", "8/8/8/4k3/8/8/8/R3K3 w Q - 0 1", 4, false, false, false},
        {"as many men as the limit", WON, 3, false, false, true},
        {"more men than the limit", "8/8/8/4k3/8/8/8/RR2K3 w - - 0 1", 3, false, false, false},
        {"switched off", WON, 0, false, false, false},
        {"no table for it", "8/8/8/4k3/8/8/8/RRR1K3 w - - 0 1", 7, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        tt_clear();
        syzygy_probe_limit = row.limit;
        Position position = position_from(row.fen);
        SearchFrame* const frame = frames + 2 + PLY;
        frame->excluded_move = row.excluded ? make_move_code(A1, A2, FLAG_QUIET) : MOVE_NONE;
        search(position, frame, 1, -50, row.pv_node ? 50 : -49, row.pv_node, PLY);
        frame->excluded_move = MOVE_NONE;
        const TTEntry* const entry = tt_probe(position.key);
        const bool asked = entry != nullptr && entry->score == TB_WIN_SCORE + PLY;
        EXPECT_EQ(asked, row.asks);
    }
}

} // namespace
} // namespace brindlemoth
