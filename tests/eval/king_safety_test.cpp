#include "eval/king_safety.h"
#include "eval_support.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(KingDanger, Cases) {
    const struct {
        const char* what;
        const char* board;
        int expected; // for Black's king
    } cases[] = {{"the lowest of several kings", "3k4/8/8/8/8/8/8/k7", 40},
                 {"three open files", "3k4/8/8/8/8/8/8/8", 60},
                 {"only the higher queen can check", "k7/pp6/8/8/8/8/PP6/QN1Q4", 0},
                 {"beyond the table's end", "8/QQQQQQQQ/Q6Q/Q6Q/Q2k3Q/Q6Q/QQQQQQQQ/8", 860 + 60}};
    for (const auto& c : cases) {
        const Position position = position_from(std::string(c.board) + " w - - 0 1");
        const PawnInfo pawns = collect_pawns(position);
        const PieceInfo attackers = collect_pieces<WHITE>(position, pawns);
        EXPECT_EQ(king_danger<BLACK>(position, pawns, attackers), c.expected) << c.what;
    }
}

} // namespace
} // namespace brindlemoth
