#include "eval/pawns.h"
#include "eval_support.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

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
        {"isolated and passed", "8/8/8/8/4P3/8/8/8", S(13, 16)},
        {"connected to the pawn behind", "8/8/8/8/4P3/3P4/8/8", S(41, 62)},
        {"black sees it the same way", "8/8/3p4/4p3/8/8/8/8", -S(41, 62)},
        {"side by side: both connected, once each", "8/8/8/8/2PPP3/8/8/8",
         CONNECTED * 3 + S(24, 31) * 3},
        {"tripled: each of the three pays, each is passed", "8/8/8/4P3/4P3/4P3/8/8",
         (DOUBLED + ISOLATED) * 3 + S(12, 23) + S(24, 31) + S(46, 54)},
        {"the a-file has one neighbour and no wrap", "8/8/8/8/P6P/8/8/8",
         ISOLATED * 2 + S(24, 31) * 2},
        // White: e4 is a candidate, its supporter d3 and the sentry d5 match; d3 is blocked.
        // Black: d5 is isolated and blocked by d3 on its file, its stop square d4 free.
        {"candidate", "8/8/8/3p4/4P3/3P4/8/8", CONNECTED + S(10, 15) - ISOLATED},
        {"no supporter, no candidate; backward and isolated", "8/8/3p4/8/4P3/8/8/8",
         ISOLATED + BACKWARD - ISOLATED - BACKWARD},
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
