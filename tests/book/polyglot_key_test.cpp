#include "board/bitboard.h"
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

// The published keys use only some of the numbers; these totals use them all.
TEST(PolyglotKey, NumbersAddUp) {
    std::uint64_t all = 0;
    std::uint64_t weighted = 0;
    std::uint64_t place = 0;
    for (const std::uint64_t number : polyglot_random64) {
        all ^= number;
        weighted += ++place * number;
    }
    EXPECT_EQ(place, 781U);
    EXPECT_EQ(all, 0xEAA4DC0DD06542B6U);
    EXPECT_EQ(weighted, 0x9ED769C526B32C64U);
}

// The en-passant term for every square that the record may hold, sensible or not: the pawns that
// could capture onto it stand on the neighbouring files, one rank back.
TEST(PolyglotKey, EnPassantTermNeedsAPawnThatCouldCapture) {
    Position position = position_from("4k3/PP1PP1PP/8/8/8/8/8/4K3 w - - 0 1");
    for (const int side : {WHITE, BLACK}) {
        for (int pawn = A1; pawn <= H8; ++pawn) {
            Position with_pawn = position;
            with_pawn.side = side;
            with_pawn.pieces[WHITE][PAWN] = 0;
            with_pawn.pieces[side][PAWN] = square_bit(pawn);
            const std::uint64_t without_term = polyglot_key(with_pawn);
            for (int square = A1; square <= H8; ++square) {
                with_pawn.ep_square = square;
                const int forward = side == WHITE ? 1 : -1;
                const int file_distance = file_of(square) - file_of(pawn);
                const bool counts = rank_of(square) == rank_of(pawn) + forward &&
                                    (file_distance == 1 || file_distance == -1);
                const std::uint64_t term =
                    counts ? polyglot_random64[POLYGLOT_EN_PASSANT + file_of(square)] : 0;
                ASSERT_EQ(polyglot_key(with_pawn), without_term ^ term)
                    << "side " << side << " pawn " << pawn << " ep_square " << square;
            }
        }
    }
}

} // namespace
} // namespace brindlemoth
