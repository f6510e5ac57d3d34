#include "eval/king_safety.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"
#include "eval_support.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

using Term = Score (*)(const Position&, int);

TEST(KingDanger, Cases) {
    const struct {
        const char* what;
        const char* board;
        int expected; // for Black's king
    } cases[] = {{"the lowest of several kings", "3k4/8/8/8/8/8/8/k7", 40},
                 {"no king", "8/8/8/8/8/8/8/4Q2K", 0},
                 {"three open files", "3k4/8/8/8/8/8/8/8", 60},
                 {"only the higher queen can check", "k7/pp6/8/8/8/8/PP6/QN1Q4", 0},
                 {"beyond the table's end", "8/QQQQQQQQ/Q6Q/Q6Q/Q2k3Q/Q6Q/QQQQQQQQ/8", 860 + 60}};
    for (const auto& c : cases)
        EXPECT_EQ(king_danger(position_from(std::string(c.board) + " w - - 0 1"), BLACK),
                  c.expected)
            << c.what;
}

TEST(PieceTerms, Values) {
    const struct {
        Term term;
        const char *what, *board;
        Score expected; // for White
    } cases[] = {
        {evaluate_mobility, "enemy pawn attacks", "8/8/8/8/2p5/3p4/8/N7", S(-62, -79)},
        {evaluate_mobility, "the own king's square", "8/8/8/8/8/1K6/8/N7", S(-53, -57)},
        {evaluate_mobility, "an enemy in the way", "8/8/8/8/8/8/1n6/B7", S(-20, -25)},
        {evaluate_mobility, "the queen is one piece", "8/8/8/8/8/8/8/Q7", S(7, 28)},

        {evaluate_outposts, "defended, b-file", "8/8/1N6/P7/8/8/8/8", S(30, 18)},
        {evaluate_outposts, "undefended, h-file", "8/8/8/7N/8/8/8/8", S(10, 5)},
        {evaluate_outposts, "seventh rank", "8/1N6/P7/8/8/8/8/8", Score{}},
        {evaluate_outposts, "a pawn behind cannot attack", "8/8/1pN5/8/8/8/8/8", S(15, 8)},
        {evaluate_outposts, "a far pawn can come near", "8/1p6/8/8/2N5/8/8/8", Score{}},
        {evaluate_outposts, "bishop, edge, defended", "8/8/8/7B/6P1/8/8/8", S(14, 8)},
        {evaluate_outposts, "bishop inside", "8/8/8/3B4/8/8/8/8", S(10, 5)},
        {evaluate_outposts, "blocked pawn in reach", "8/8/8/4p3/4P3/8/8/1B6", Score{}},
        {evaluate_outposts, "out of reach of two", "8/8/8/4p3/4P3/8/8/B1B5", S(-8, -12)},

        {evaluate_rooks, "open file", "8/8/8/8/3R4/8/8/8", S(47, 26)},
        {evaluate_rooks, "half-open file", "8/3p4/8/8/3R4/8/8/8", S(20, 13)},
        {evaluate_rooks, "own pawn behind", "8/8/8/8/3R4/8/3P4/8", Score{}},
        {evaluate_rooks, "seventh, king behind", "6k1/R7/8/8/8/8/8/8", S(74, 59)},
        {evaluate_rooks, "seventh with a pawn", "8/R5kp/8/8/8/8/8/8", S(74, 59)},
        {evaluate_rooks, "no king at all", "8/R7/8/8/8/8/8/8", S(47, 26)},

        {evaluate_threats, "knight on rook and queen", "8/8/1r3q2/3N4/8/8/8/8", S(95, 45)},
        {evaluate_threats, "two pawns on two knights", "8/8/8/1n3n2/P3P3/8/8/8", S(55, 30)},
        {evaluate_threats, "pawn on rook", "8/8/8/1r6/P7/8/8/8", S(60, 15)},
        {evaluate_threats, "no wrap around the edge", "8/8/7n/r7/7P/8/8/8", Score{}},
        {evaluate_threats, "only the first piece", "7r/8/8/8/8/2P5/8/B7", Score{}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.term(position_from(std::string(c.board) + " w - - 0 1"), WHITE), c.expected)
            << c.what << ' ' << c.board;
    // Of two kings the one on the lowest square is the king.
    EXPECT_EQ(evaluate_rooks(position_from("6k1/R7/8/8/8/8/8/6k1 w - - 0 1"), WHITE), S(47, 26));
}

constexpr Score DOUBLED = S(-5, -12);
constexpr Score ISOLATED = S(-11, -15);
constexpr Score CONNECTED = S(5, 8);
constexpr Score BACKWARD = S(-10, -12);

TEST(Pawns, Structures) {
    const struct {
        const char* what;
        const char* board;
        Score expected; // White minus Black
    } cases[] = {
        {"black sees it the same way", "8/8/3p4/4p3/8/8/8/8", -S(41, 62)},
        {"tripled: each of the three pays, each is passed", "8/8/8/4P3/4P3/4P3/8/8",
         (DOUBLED + ISOLATED) * 3 + S(12, 23) + S(24, 31) + S(46, 54)},
        {"the a-file has one neighbour and no wrap", "8/8/8/8/P6P/8/8/8",
         ISOLATED * 2 + S(24, 31) * 2},
        // White: e4 is a candidate, its supporter d3 and the sentry d5 match; d3 is blocked.
        // Black: d5 is isolated and blocked by d3 on its file, its stop square d4 free.
        {"candidate", "8/8/8/3p4/4P3/3P4/8/8", CONNECTED + S(10, 15) - ISOLATED},
        // a5 (rank 4) with the sentry b7 and the supporter b4.
        {"neighbour beside does not support", "8/1p6/8/8/PP6/8/8/8",
         CONNECTED * 2 - ISOLATED + Score{}},
        {"connected by the neighbour beside, and still backward", "8/8/2p5/8/PP6/8/8/8",
         CONNECTED * 2 + S(24, 31) + BACKWARD - ISOLATED - BACKWARD},
        {"candidate on the seventh is worth nothing", "5p2/4P3/3P4/8/8/8/8/8",
         CONNECTED + S(97, 111) - ISOLATED},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Position position = position_from(std::string(c.board) + " w - - 0 1");
        EXPECT_EQ(evaluate_pawns(position), c.expected);
        EXPECT_EQ(evaluate_pawns(position), c.expected) << "from the cache";
    }
}

} // namespace
} // namespace brindlemoth
