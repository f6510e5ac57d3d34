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
                 {"no king", "8/8/8/8/8/8/8/4Q2K", 0},
                 {"three open files", "3k4/8/8/8/8/8/8/8", 60},
                 {"only the higher queen can check", "k7/pp6/8/8/8/8/PP6/QN1Q4", 0},
                 {"beyond the table's end", "8/QQQQQQQQ/Q6Q/Q6Q/Q2k3Q/Q6Q/QQQQQQQQ/8", 860 + 60}};
    for (const auto& c : cases)
        EXPECT_EQ(king_danger(position_from(std::string(c.board) + " w - - 0 1"), BLACK),
                  c.expected)
            << c.what;
}

} // namespace
} // namespace brindlemoth
