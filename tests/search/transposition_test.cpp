#include "search/search_state.h"
#include "search/transposition.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

class Transposition : public testing::Test {
protected:
    void SetUp() override {
        tt_resize(1);
        tt_generation = 0;
    }
    void TearDown() override { SetUp(); }
};

TEST_F(Transposition, ReplacementRule) {
    constexpr Key OLD = 0x5555;
    const struct {
        const char* what;
        bool same_position, same_generation, replaced;
        int old_depth, depth;
    } ROWS[] = {{"own position, shallower", true, true, true, 9, 0},
                {"other position, as deep", false, true, true, 9, 9},
                {"other position, deeper", false, true, true, 9, 10},
                {"other position, older and deeper entry", false, false, true, 9, 0},
                {"two entries of depth 0", false, true, true, 0, 0},
                {"capped depth against a depth beyond the cap", false, true, true, 300, 255},
                {"capped depth against a lesser one", false, true, false, 300, 254}};
    for (const auto& row : ROWS) {
        tt_resize(1);
        tt_generation = 200;
        tt_store(OLD, 50, BOUND_EXACT, row.old_depth, make_move_code(E2, E4, FLAG_QUIET), 0);
        if (!row.same_generation)
            tt_generation = 201;
        const Key key = row.same_position ? OLD : OLD + 65536;
        tt_store(key, -7, BOUND_UPPER, row.depth, MOVE_NONE, 3);
        const TTEntry* const entry = tt_probe(key);
        EXPECT_EQ(entry != nullptr, row.replaced) << row.what;
        EXPECT_EQ(tt_probe(OLD) != nullptr, row.same_position || !row.replaced) << row.what;
        if (entry == nullptr)
            continue;
        EXPECT_EQ(std::tie(entry->score, entry->move, entry->bound, entry->generation),
                  std::make_tuple(-7, MOVE_NONE, BOUND_UPPER, tt_generation));
        EXPECT_EQ(entry->depth, row.depth) << row.what;
    }
}

TEST_F(Transposition, MateScoresCountFromTheNodeThatStoredThem) {
    const struct {
        int score, stored_at, stored, read_at, read;
    } ROWS[] = {{-30871, 10, -30881, 4, -30877},
                {30993, 6, 30999, 2, 30997},
                {30000, 5, 30005, 5, 30000},
                {29999, 5, 29999, 9, 29999},
                {-30000, 5, -30005, 0, -30005},
                // The test on reading looks at the stored value.
                {30000, 0, 30000, 3, 29997}};
    for (const auto& row : ROWS) {
        EXPECT_EQ(score_from_table(row.stored, row.read_at), row.read) << row.score;
        tt_store(99, row.score, BOUND_LOWER, 1, MOVE_NONE, row.stored_at);
        ASSERT_NE(tt_probe(99), nullptr);
        EXPECT_EQ(tt_probe(99)->score, row.stored) << row.score;
    }
}
