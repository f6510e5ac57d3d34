#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/kpk.h"
#include "support/support.h"

#include <gtest/gtest.h>

using namespace brindlemoth;
using namespace std::string_literals;

TEST(EndgameBonus, Patterns) {
    const struct {
        const char* what;
        const char* fen;
        int expected;
    } cases[] = {
        {"rook, king in the centre", "8/8/8/3k4/8/8/8/R3K3 w - - 0 1", 10 * (13 - 6 - 4)},
        {"queen, king in the corner", "k7/8/1K6/8/8/8/8/7Q w - - 0 1", 10 * (13 - 2)},
        {"bishop and knight, right corner", "8/8/8/8/8/1K6/8/k1B1N3 w - - 0 1", 200 + 100},
        {"light bishop, right corner", "k7/8/1K6/8/8/8/8/4NB2 w - - 0 1", 200 + 100},
        {"bridge", "3K4/3P2k1/8/8/8/8/r7/5R2 w - - 0 1", 20 * (15 + 3)},
        {"bridge, rook pawn", "K7/P2k4/8/8/8/8/r7/1R6 w - - 0 1", 0},
        {"bridge, pawn on the b-file", "1K6/1P2k3/8/8/8/8/r7/5R2 w - - 0 1", 20 * (15 + 3)},
        {"bridge, pawn on the g-file", "6K1/6P1/4k3/8/8/8/r7/5R2 w - - 0 1", 20 * (15 + 2)},
        {"bridge, own king two files off", "5K2/3P3k/8/8/8/8/r7/5R2 w - - 0 1", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Position position = position_from(c.fen);
        EXPECT_EQ(endgame_bonus(position), c.expected);
    }
    for (const char further : "NBRQPnbrqp"s)
        EXPECT_EQ(
            endgame_bonus(position_from("3K4/3P2k1/8/8/8/7"s + further + "/r7/5R2 w - - 0 1")), 0)
            << "bridge with a further " << further;
}

TEST(EndgameScale, Factors) {
    const struct {
        const char* what;
        const char* fen;
        int value, expected;
    } cases[] = {
        {"drawn pawn ending", "8/3k4/8/3K4/3P4/8/8/8 w - - 0 1", 150, 0},

        {"wrong bishop, doubled pawns on the h-file", "6k1/8/7P/7P/8/8/8/3BK3 w - - 0 1", 300, 0},
        {"wrong bishop and a knight", "1k6/8/8/P7/8/8/8/2BNK3 w - - 0 1", 300, 256},

        {"third-rank defence", "3k4/8/r7/3P4/2K5/8/8/1R6 w - - 0 1", 200, 0},
        {"strong king has crossed", "3k4/8/r1K5/3P4/8/8/8/1R6 w - - 0 1", 200, 256},
        {"blockade", "8/8/3k4/3P4/8/8/8/1R2K2r b - - 0 1", 200, 0},
        {"blockade, king two from the pawn, to move", "8/8/3k4/3P4/8/3K4/8/1R5r w - - 0 1", 200,
         256},
        {"blockade, king beside the rook", "8/8/3k4/3P4/8/8/7K/1R5r b - - 0 1", 200, 256},

        {"level material, no pawns, value 0", "r3k3/8/8/8/8/8/8/R3K3 w - - 0 1", 0, 16},

        {"opposite bishops, 5 pawns", "2b1k3/pp6/8/8/8/8/PPP5/2B1K3 w - - 0 1", 30, 160},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Position position = position_from(c.fen);
        EXPECT_EQ(endgame_scale(position, c.value), c.expected);
    }
}

TEST(InsufficientMaterial, IsWorthExactlyNothing) {
    const struct {
        const char* board;
        bool drawn;
    } cases[] = {{"4k3/8/8/8/8/8/8/4K3", true},
                 {"4k3/8/8/8/8/8/8/4KB2", true},
                 {"4k3/8/8/8/8/8/8/3NKN2", true},
                 {"4kb2/8/8/8/8/8/8/2B1K3", true},
                 {"2b1k3/8/8/8/8/8/8/2B1K3", false},
                 {"4k3/8/8/8/8/8/8/2B1KB2", false},
                 {"8/8/8/8/8/8/8/k1KNNN2", false},
                 {"k7/8/8/8/8/8/8/2K4R", false},
                 // A position without one of the kings is worth nothing either.
                 {"8/8/8/3Q4/8/8/8/4K3", true},
                 {"4k3/8/8/3Q4/8/8/8/8", true}};
    for (const auto& c : cases)
        for (const char* side : {" w - - 0 1", " b - - 0 1"})
            EXPECT_EQ(evaluate(position_from(c.board + std::string(side))) == 0, c.drawn)
                << c.board;
}

TEST(Kpk, Counts) {
    int count[2][KPK_WIN + 1] = {};
    for (int index = 0; index < KPK_SIZE; ++index)
        ++count[(index >> 12) & 1][kpk_table[index]];
    EXPECT_EQ(count[0][KPK_WIN], 62480);
    EXPECT_EQ(count[1][KPK_WIN], 48802);
    EXPECT_EQ(count[0][KPK_DRAW] + count[1][KPK_DRAW], 54394);
}
