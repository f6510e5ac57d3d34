#include "eval/kpk.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(Kpk, Counts) {
    int count[KPK_WIN + 1] = {};
    int wins[2] = {};
    for (int index = 0; index < KPK_SIZE; ++index) {
        ASSERT_LE(kpk_table[index], KPK_WIN);
        ++count[kpk_table[index]];
        wins[(index >> 12) & 1] += kpk_table[index] == KPK_WIN ? 1 : 0;
    }
    EXPECT_EQ(count[KPK_WIN], 111282);
    EXPECT_EQ(count[KPK_DRAW], 54394);
    EXPECT_EQ(count[KPK_INVALID], 30932);
    EXPECT_EQ(wins[0], 62480);
    EXPECT_EQ(wins[1], 48802);
}

} // namespace
} // namespace brindlemoth
