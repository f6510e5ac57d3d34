#include "search/history.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

class History : public testing::Test {
protected:
    void SetUp() override { clear_history(); }
    void TearDown() override { clear_history(); }
};

TEST_F(History, CellsArePulledTowardTheirLimit) {
    const struct {
        std::int32_t before;
        int amount;
        std::int32_t after;
    } ROWS[] = {
        {0, 100, 100},     {16384, 100, 16384},   {-16384, -100, -16384}, {16384, -100, 16184},
        {8192, 100, 8242}, {100, 1, 101},         {-100, 100, 0},         {-16383, 1, -16382},
        {0, 16129, 16129}, {16129, 16129, 16381},
    };
    for (const auto& row : ROWS) {
        std::int32_t cell = row.before;
        update_cell(cell, row.amount);
        EXPECT_EQ(cell, row.after) << row.before << ' ' << row.amount;
    }
}

TEST_F(History, AgeingHalvesTowardZeroAndClearsTheKillers) {
    constexpr std::int32_t BEFORE[] = {-5, 5, -1, 1, 16384};
    constexpr std::int32_t AFTER[] = {-2, 2, 0, 0, 8192};
    for (int i = 0; i < 5; ++i) {
        butterfly_history[1][63][59 + i] = BEFORE[i];
        continuation_history[11][63][11][59 + i] = BEFORE[i];
    }
    killers[127][1] = killers[0][0] = countermoves[11][63] = 77;
    age_history();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(butterfly_history[1][63][59 + i], AFTER[i]) << BEFORE[i];
        EXPECT_EQ(continuation_history[11][63][11][59 + i], AFTER[i]) << BEFORE[i];
    }
    EXPECT_EQ(killers[0][0], MOVE_NONE);
    EXPECT_EQ(killers[127][1], MOVE_NONE);
    EXPECT_EQ(countermoves[11][63], 77);
}

constexpr Move BEST = make_move_code(E8, D8, FLAG_QUIET);
constexpr Move FIRST = make_move_code(E8, E7, FLAG_QUIET);
constexpr Move SECOND = make_move_code(A7, A5, FLAG_DOUBLE_PUSH);
constexpr Move QUIETS[] = {FIRST, SECOND, BEST};
constexpr int KING_PIECE = make_piece(BLACK, KING);
constexpr int PAWN_PIECE = make_piece(BLACK, PAWN);

TEST_F(History, ACutoffRewardsItsMoveAndPunishesTheOthers) {
    const Position position = position_from("4k2Q/p7/8/8/8/8/8/4K3 b - - 0 1");
    constexpr PreviousMove PREVIOUS{make_piece(WHITE, QUEEN), H8};
    record_quiet_cutoff(position, BEST, QUIETS, 3, 6, 9, PREVIOUS);
    EXPECT_EQ(butterfly_history[BLACK][E8][D8], 36);
    EXPECT_EQ(butterfly_history[BLACK][E8][E7], -36);
    EXPECT_EQ(butterfly_history[BLACK][A7][A5], -36);
    const auto& continuation = continuation_history[make_piece(WHITE, QUEEN)][H8];
    EXPECT_EQ(continuation[KING_PIECE][D8], 36);
    EXPECT_EQ(continuation[KING_PIECE][E7], -36);
    EXPECT_EQ(continuation[PAWN_PIECE][A5], -36);
    EXPECT_EQ(countermoves[make_piece(WHITE, QUEEN)][H8], BEST);
    EXPECT_EQ(history_score(BLACK, KING_PIECE, E8, D8, PREVIOUS), 72);
    EXPECT_EQ(history_score(BLACK, KING_PIECE, E8, D8, {EMPTY_SQUARE, 0}), 36);
}

TEST_F(History, KillersKeepTheLastTwoDifferentMoves) {
    const Position position = position_from("4k2Q/p7/8/8/8/8/8/4K3 b - - 0 1");
    const struct {
        Move move, newer, older;
    } ROWS[] = {
        {BEST, BEST, MOVE_NONE}, {BEST, BEST, MOVE_NONE}, {FIRST, FIRST, BEST},
        {BEST, BEST, FIRST},     {SECOND, SECOND, BEST},
    };
    for (const auto& row : ROWS) {
        record_quiet_cutoff(position, row.move, &row.move, 1, 1, 127, {EMPTY_SQUARE, 0});
        EXPECT_EQ(killers[127][0], row.newer);
        EXPECT_EQ(killers[127][1], row.older);
    }
    EXPECT_EQ(killers[126][0], MOVE_NONE);
}

} // namespace
} // namespace brindlemoth
