#include "board/attacks.h"
#include "board/bitboard.h"
#include "eval/piece_terms.h"
#include "eval_support.h"
#include "movegen/legality.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

using Term = Score (*)(const Position&, int);

// The totals of the four tables, plain and weighted by place, betray any wrong or moved entry.
TEST(PieceTerms, MobilityTablesAddUp) {
    const struct {
        int type;
        int most; // squares reached on an empty board
        Score total, weighted;
    } cases[] = {{KNIGHT, 8, S(-29, -102), S(575, 264)},
                 {BISHOP, 13, S(660, 583), S(7064, 6839)},
                 {ROOK, 14, S(337, 1454), S(4716, 16101)},
                 {QUEEN, 27, S(51, 625), S(2270, 10799)}};
    for (const auto& c : cases) {
        Position position = position_from(std::string("8/8/8/8/3") + "PNBRQK"[c.type] + "4/8/8/8");
        Bitboard reached = attacks_from(c.type, D4, WHITE, 0);
        Score total{}, weighted{};
        // Squares that own pawns are said to hold do not count.
        for (int count = c.most; count >= 0; --count) {
            const Score value = evaluate_mobility(position, WHITE);
            total += value;
            weighted += value * (count + 1);
            if (reached != 0)
                position.pieces[WHITE][PAWN] |= square_bit(pop_lowest(reached));
        }
        EXPECT_EQ(total, c.total) << "piece type " << c.type;
        EXPECT_EQ(weighted, c.weighted) << "piece type " << c.type;
    }
}

TEST(PieceTerms, Values) {
    const struct {
        Term term;
        const char *what, *board;
        Score expected; // for White
    } cases[] = {
        {evaluate_mobility, "enemy pawn attacks", "8/8/8/8/2p5/3p4/8/N7", S(-62, -79)},
        {evaluate_mobility, "the own king's square", "8/8/8/8/8/1K6/8/N7", S(-53, -57)},
        {evaluate_mobility, "a piece in the way", "8/8/8/8/8/8/1N6/B7", S(-20, -25) + S(3, 7)},
        {evaluate_mobility, "an enemy in the way", "8/8/8/8/8/8/1n6/B7", S(-20, -25)},
        {evaluate_mobility, "the queen is one piece", "8/8/8/8/8/8/8/Q7", S(7, 28)},

        {evaluate_outposts, "defended, a-file", "8/8/N7/1P6/8/8/8/8", S(20, 12)},
        {evaluate_outposts, "defended, b-file", "8/8/1N6/P7/8/8/8/8", S(30, 18)},
        {evaluate_outposts, "undefended, h-file", "8/8/8/7N/8/8/8/8", S(10, 5)},
        {evaluate_outposts, "seventh rank", "8/1N6/P7/8/8/8/8/8", Score{}},
        {evaluate_outposts, "third rank", "8/8/8/8/8/2N5/1P6/8", Score{}},
        {evaluate_outposts, "a pawn behind cannot attack", "8/8/1pN5/8/8/8/8/8", S(15, 8)},
        {evaluate_outposts, "a far pawn can come near", "8/1p6/8/8/2N5/8/8/8", Score{}},
        {evaluate_outposts, "bishop on the edge", "8/8/8/7B/8/8/8/8", S(6, 3)},
        {evaluate_outposts, "bishop, edge, defended", "8/8/8/7B/6P1/8/8/8", S(14, 8)},
        {evaluate_outposts, "bishop inside, defended", "8/8/8/3B4/4P3/8/8/8", S(20, 12)},
        {evaluate_outposts, "bishop inside", "8/8/8/3B4/8/8/8/8", S(10, 5)},
        {evaluate_outposts, "blocked pawn in reach", "8/8/8/4p3/4P3/8/8/1B6", Score{}},
        {evaluate_outposts, "out of reach of one", "8/8/8/4p3/4P3/8/8/1BB5", S(-4, -6)},
        {evaluate_outposts, "out of reach of two", "8/8/8/4p3/4P3/8/8/B1B5", S(-8, -12)},

        {evaluate_rooks, "open file", "8/8/8/8/3R4/8/8/8", S(47, 26)},
        {evaluate_rooks, "half-open file", "8/3p4/8/8/3R4/8/8/8", S(20, 13)},
        {evaluate_rooks, "own pawn behind", "8/8/8/8/3R4/8/3P4/8", Score{}},
        {evaluate_rooks, "seventh, king behind", "6k1/R7/8/8/8/8/8/8", S(74, 59)},
        {evaluate_rooks, "seventh, king beside it", "8/R5k1/8/8/8/8/8/8", S(47, 26)},
        {evaluate_rooks, "seventh with a pawn", "8/R5kp/8/8/8/8/8/8", S(74, 59)},
        {evaluate_rooks, "no king at all", "8/R7/8/8/8/8/8/8", S(47, 26)},

        {evaluate_threats, "knight on rook and queen", "8/8/1r3q2/3N4/8/8/8/8", S(95, 45)},
        {evaluate_threats, "each minor piece counts", "8/8/5r2/3N4/8/8/8/B7", S(90, 40)},
        {evaluate_threats, "two pawns on two knights", "8/8/8/1n3n2/P3P3/8/8/8", S(55, 30)},
        {evaluate_threats, "pawn on rook", "8/8/8/1r6/P7/8/8/8", S(60, 15)},
        {evaluate_threats, "pawn on queen", "8/8/8/1q6/P7/8/8/8", Score{}},
        {evaluate_threats, "no wrap around the edge", "8/8/7n/r7/7P/8/8/8", Score{}},
        {evaluate_threats, "only the first piece", "7r/8/8/8/8/2P5/8/B7", Score{}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.term(position_from(std::string(c.board) + " w - - 0 1"), WHITE), c.expected)
            << c.what << ' ' << c.board;
    // Of two kings the one on the lowest square is the king.
    EXPECT_EQ(evaluate_rooks(position_from("6k1/R7/8/8/8/8/8/6k1 w - - 0 1"), WHITE), S(47, 26));
}

} // namespace
} // namespace brindlemoth
