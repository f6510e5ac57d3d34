#include "book/polyglot_key.h"
#include "book/polyglot_random64.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(PolyglotKey, PublishedKeys) {
    const struct {
        const char* fen;
        std::uint64_t key;
    } ROWS[] = {
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0x463B96181691FC9C},
        {"rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 2", 0x0756B94461C50FB0},
        {"rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", 0x22A48B5A8E47FF78},
        {"rnbq1bnr/ppp1pkpp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR w - - 0 4", 0x00FDD303C946BDD9},
        {"rnbqkbnr/p1pppppp/8/8/PpP4P/8/1P1PPPP1/RNBQKBNR b KQkq c3 0 3", 0x3C8123EA7B067637},
        {"rnbqkbnr/p1pppppp/8/8/P6P/R1p5/1P1PPPP1/1NBQKBNR b Kkq - 0 4", 0x5C3F9B829B279560},
    };
    for (const auto& row : ROWS)
        EXPECT_EQ(polyglot_key(position_from(row.fen)), row.key) << row.fen;
}

// The published keys depend on some of the numbers only; these sums depend on all of them.
TEST(PolyglotKey, SumsOfAllNumbers) {
    std::uint64_t all = 0;
    std::uint64_t weighted = 0;
    std::uint64_t index = 0;
    for (const std::uint64_t number : POLYGLOT_RANDOM64) {
        all ^= number;
        weighted += ++index * number;
    }
    EXPECT_EQ(index, 781U);
    EXPECT_EQ(all, 0xEAA4DC0DD06542B6U);
    EXPECT_EQ(weighted, 0x9ED769C526B32C64U);
}

} // namespace
} // namespace brindlemoth
