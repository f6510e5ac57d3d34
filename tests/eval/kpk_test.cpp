#include "board/attacks.h"
#include "eval/kpk.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

int entry(int strong_king, int weak_king, int weak_to_move, int pawn) {
    return kpk_table[kpk_index(strong_king, weak_king, weak_to_move, pawn)];
}

TEST(Kpk, Counts) {
    int count[5] = {};
    int wins[2] = {};
    for (int index = 0; index < KPK_SIZE; ++index) {
        ASSERT_LE(kpk_table[index], KPK_WIN);
        ++count[kpk_table[index]];
        wins[(index >> 12) & 1] += kpk_table[index] == KPK_WIN ? 1 : 0;
    }
    EXPECT_EQ(count[KPK_WIN], 111282);
    EXPECT_EQ(count[KPK_DRAW], 54394);
    EXPECT_EQ(count[KPK_INVALID], 30932);
    EXPECT_EQ(count[KPK_UNKNOWN], 0);
    EXPECT_EQ(wins[0], 62480);
    EXPECT_EQ(wins[1], 48802);
}

TEST(Kpk, Positions) {
    const struct {
        const char* what;
        int strong_king, weak_king, weak_to_move, pawn, expected;
    } cases[] = {{"kings on one square", E4, E4, 0, A2, KPK_INVALID},
                 {"adjacent kings", E4, E5, 1, A2, KPK_INVALID},
                 {"stalemate of the strong side", A8, C7, 0, A7, KPK_DRAW},
                 {"opposition held", D5, D7, 0, D4, KPK_DRAW},
                 {"opposition lost", D5, D7, 1, D4, KPK_WIN},
                 {"rook pawn, king in the corner", B6, A8, 0, A6, KPK_DRAW}};
    for (const auto& c : cases)
        EXPECT_EQ(entry(c.strong_king, c.weak_king, c.weak_to_move, c.pawn), c.expected) << c.what;
}

} // namespace
} // namespace brindlemoth
