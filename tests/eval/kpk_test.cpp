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
        int strong_king, weak_king, weak_to_move, pawn;
        int expected;
    } cases[] = {
        {"kings on one square", E4, E4, 0, A2, KPK_INVALID},
        {"adjacent kings", E4, E5, 1, A2, KPK_INVALID},
        {"in check out of turn", H1, B5, 0, A4, KPK_INVALID},
        {"in check in turn", H1, B5, 1, A4, KPK_DRAW},
        {"stalemate of the strong side", A8, C7, 0, A7, KPK_DRAW},
        {"one move before it", A8, C8, 1, A7, KPK_DRAW},
        {"guarded promotion", B7, D7, 0, C7, KPK_WIN},
        {"promotion that the king takes", H1, D7, 0, C7, KPK_DRAW},
        {"king on the sixth before its pawn", D6, D8, 0, D5, KPK_WIN},
        {"king on the sixth before its pawn, weak to move", D6, D8, 1, D5, KPK_WIN},
        {"opposition held", D5, D7, 0, D4, KPK_DRAW},
        {"opposition lost", D5, D7, 1, D4, KPK_WIN},
        {"rook pawn, king in the corner", B6, A8, 0, A6, KPK_DRAW},
        {"outside the square", H1, G8, 0, A3, KPK_WIN},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(entry(c.strong_king, c.weak_king, c.weak_to_move, c.pawn), c.expected) << c.what;
    }
}

// In the solved table every entry follows from its successors.
TEST(Kpk, TheTableIsAFixedPoint) {
    for (int pawn = A2; pawn <= H7; ++pawn) {
        if (file_of(pawn) > 3) {
            continue;
        }
        for (int kings = 0; kings < 64 * 64; ++kings) {
            for (const int weak_to_move : {0, 1}) {
                const int strong = kings & 63;
                const int weak = kings >> 6;
                ASSERT_EQ(kpk_classify(strong, weak, weak_to_move, pawn),
                          entry(strong, weak, weak_to_move, pawn));
            }
        }
    }
}

} // namespace
} // namespace brindlemoth
