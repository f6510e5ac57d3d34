#include "board/position.h"
#include "eval/evaluate.h"
#include "eval_support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

void select_style(int style) {
    eval_style = style;
    init_eval_tables();
}

TEST(PackedScore, HalvesKeepTheBorrow) {
    EXPECT_EQ(eg_value(S(-5, 10)), 9);
    EXPECT_EQ(eg_value(S(5, 10)), 10);
    EXPECT_EQ(mg_value(S(-1, 0)), -1);
    EXPECT_EQ(eg_value(S(-1, 0)), -1);
    EXPECT_EQ(mg_value(S(0, -1)), 0);
    EXPECT_EQ(eg_value(S(0, -1)), -1);
    EXPECT_EQ(S(-35, 12) + S(82, 94), S(47, 106));
}

// Sums of the table cells over a1 to h8, plain and weighted by place from 1 to 64: a mistyped cell
// shows in at least one of them.
TEST(PieceSquares, TablesAddUp) {
    struct Row {
        int style, type, mg, eg, weighted_mg, weighted_eg;
    };
    const Row rows[] = {{0, PAWN, 759, 2023, 40462, 97963},    {1, PAWN, 1932, 2279, 85615, 99837},
                        {0, KNIGHT, -59, -1050, 3866, -37574}, {1, KNIGHT, 1, -32, 44548, 24149},
                        {0, BISHOP, 341, -291, 9846, -8852},   {1, BISHOP, 1, -27, 25287, 6319},
                        {0, ROOK, 505, 24, 42639, 7346},       {1, ROOK, 505, 24, 42639, 7346},
                        {0, QUEEN, 146, 261, 19568, 21771},    {1, QUEEN, 0, -36, 21340, 17783},
                        {0, KING, -999, 66, -32618, 8140},     {1, KING, -999, 66, -32618, 8140}};
    const Score material[] = {S(82, 94),   S(337, 281),  S(365, 297),
                              S(477, 512), S(1025, 936), S(0, 0)};
    for (const Row& row : rows) {
        select_style(row.style);
        Row sums{row.style, row.type, 0, 0, 0, 0};
        for (int square = A1; square <= H8; ++square) {
            const Score cell = psq_table[row.type][square] - material[row.type];
            const int mg = mg_value(cell);
            const int eg = eg_value(cell - S(mg, 0));
            sums.mg += mg;
            sums.eg += eg;
            sums.weighted_mg += (square + 1) * mg;
            sums.weighted_eg += (square + 1) * eg;
        }
        SCOPED_TRACE(testing::Message() << "type " << row.type << " style " << row.style);
        EXPECT_EQ(sums.mg, row.mg);
        EXPECT_EQ(sums.eg, row.eg);
        EXPECT_EQ(sums.weighted_mg, row.weighted_mg);
        EXPECT_EQ(sums.weighted_eg, row.weighted_eg);
    }
    select_style(0);
}

} // namespace
} // namespace brindlemoth
