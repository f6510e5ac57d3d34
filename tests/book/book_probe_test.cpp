// The keys of positions, and the moves of the book, with records made here.
#include "board/fen.h"
#include "board/make_move.h"
#include "book/book.h"
#include "book/polyglot_key.h"
#include "book/polyglot_random64.h"
#include "movegen/legality.h"
#include "support/book_file.h"
#include "support/support.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace brindlemoth;

static std::string probe_text(const Position& position) {
    return move_to_text(book_probe(position));
}

TEST(BookProbe, RecordsMeanLegalMovesOrNothing) {
    const char* const castling = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const char* const black_castling = "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1";
    const char* const en_passant = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";
    const char* const promotion = "r3k3/1P6/8/8/8/8/8/4K3 w - - 0 1";
    const char* const pinned = "4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1";
    const struct {
        const char* fen;
        int from, to, promotion;
        const char* expected;
    } ROWS[] = {{castling, E1, H1, 0, "e1g1"},
                {castling, E1, A1, 0, "e1c1"},
                {black_castling, E8, H8, 0, "e8g8"},
                {"4k3/8/8/8/8/8/8/R3K2R w - - 0 1", E1, H1, 0, "0000"}, // no right left
                {"4kr2/8/8/8/8/8/8/4K2R w K - 0 1", E1, H1, 0, "0000"}, // through check
                {"4k3/8/8/8/4K2R/8/8/8 w - - 0 1", E4, H4, 0, "0000"},  // not at home
                {"4k3/8/8/8/8/8/1K6/4R3 w - - 0 1", E1, H1, 0, "e1h1"}, // a rook may go there
                {"4k3/8/8/8/8/8/1K6/4Q3 w - - 0 1", E1, A1, 0, "e1a1"}, // and a queen
                {en_passant, E5, D6, 0, "e5d6"},
                {"4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1", E5, D6, 0, "0000"},
                {promotion, B7, B8, 0, "b7b8q"},
                {promotion, B7, B8, 1, "b7b8n"},
                {promotion, B7, A8, 4, "b7a8q"},
                {promotion, B7, B8, 7, "0000"},
                {promotion, E1, E2, 1, "0000"}, // only a pawn is promoted
                {pinned, E2, C3, 0, "0000"},
                {pinned, E7, E6, 0, "0000"}, // the other side's
                {"8/8/8/8/8/8/8/8 w - - 0 1", A1, A1, 0, "0000"}};
    for (const auto& row : ROWS) {
        Position position = position_from(row.fen);
        const int move = book_move(row.from, row.to, row.promotion);
        ASSERT_TRUE(load_records({{polyglot_key(position), move, 1}}));
        EXPECT_EQ(probe_text(position), row.expected)
            << row.fen << " from " << row.from << " to " << row.to << " as " << row.promotion;
    }
}

TEST(BookProbe, WeightsAreSharesOfTheRandomNumber) {
    Position position = position_from(starting_fen);
    const std::uint64_t key = polyglot_key(position);
    const BookRecord before = {key - 1, book_move(A2, A3), 1000};
    const BookRecord behind = {key + 1, book_move(A2, A3), 1000};
    ASSERT_TRUE(load_records({before,
                              {key, book_move(B2, B3), 0},
                              {key, book_move(C2, C3), 1},
                              {key, book_move(D2, D3), 0},
                              {key, book_move(E2, E3), 3},
                              behind}));
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::srand(seed);
        const int pick = std::rand() % 4;
        std::srand(seed);
        EXPECT_EQ(probe_text(position), pick == 0 ? "c2c3" : "e2e3") << seed;
    }
    ASSERT_TRUE(load_records({before, {key, book_move(B2, B3), 0}, {key, 0, 0}, behind}));
    EXPECT_EQ(book_probe(position), MOVE_NONE);
}

TEST(BookProbe, OnlyTheFirst64RecordsOfAPositionCount) {
    Position position = position_from(starting_fen);
    const std::uint64_t key = polyglot_key(position);
    std::vector<BookRecord> records(64, {key, book_move(E2, E4), 0});
    records.resize(1000, {key, book_move(D2, D4), 0xFFFF});
    ASSERT_TRUE(load_records(records));
    EXPECT_EQ(book_probe(position), MOVE_NONE);
    records[63].weight = 1;
    ASSERT_TRUE(load_records(records));
    EXPECT_EQ(probe_text(position), "e2e4");
    own_book = false;
    EXPECT_EQ(book_probe(position), MOVE_NONE);
    // An unsorted book is loaded, and just gives misses.
    ASSERT_TRUE(load_records({{key, 0, 1}, {key - 1, 0, 1}, {key - 2, 0, 1}}));
    EXPECT_EQ(book_probe(position), MOVE_NONE);
}

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
