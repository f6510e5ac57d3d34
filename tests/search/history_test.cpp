#include "search/history.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

class History : public testing::Test {
protected:
    void SetUp() override { clear_history(); }
    void TearDown() override { clear_history(); }
};

TEST_F(History, AgeingHalvesTowardZeroAndClearsTheKillers) {
    constexpr std::int16_t BEFORE[] = {-5, 5, -1, 1, 16384};
    constexpr std::int16_t AFTER[] = {-2, 2, 0, 0, 8192};
    for (int i = 0; i < 5; ++i) {
        butterfly_history[1][4091 + i] = BEFORE[i];
        continuation_history[11][63][11][59 + i] = BEFORE[i];
    }
    killers[127][1] = killers[0][0] = countermoves[11][63] = 77;
    age_history();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(butterfly_history[1][4091 + i], AFTER[i]) << BEFORE[i];
        EXPECT_EQ(continuation_history[11][63][11][59 + i], AFTER[i]) << BEFORE[i];
    }
    EXPECT_EQ(killers[0][0], MOVE_NONE);
    EXPECT_EQ(killers[127][1], MOVE_NONE);
    EXPECT_EQ(countermoves[11][63], 77);
}

} // namespace
} // namespace brindlemoth
