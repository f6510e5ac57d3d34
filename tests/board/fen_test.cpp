#include "board/bitboard.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/position.h"
#include "support/support.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

TEST(Keys, FixedSeedGivesTheSameKeysEveryTime) {
    const Position position = position_from(starting_fen);
    EXPECT_EQ(position.key, 0xE2ADAAD23B96D882ULL);
    EXPECT_EQ(position.pawn_key, 0xD5F63DA4C273A486ULL);
    EXPECT_EQ(ep_file_keys[7], 0x3A2F16E74FB3945AULL);
    EXPECT_EQ(side_key, 0xE89C266A54A6A5F2ULL);
}

struct FenRow {
    const char* fen;
    bool usable;
    int pieces, side, castling, ep_square, halfmove, fullmove;
};

const FenRow FEN_ROWS[] = {
    {starting_fen, true, 32, WHITE, 15, NO_SQUARE, 0, 1},
    // Missing fields get defaults.
    {"8/8/8/8/8/8/8/8", true, 0, WHITE, 0, NO_SQUARE, 0, 1},
    {"4k3/8/8/8/8/8/8/4K3 b", true, 2, BLACK, 0, NO_SQUARE, 0, 1},
    // Odd fields are read for what they are worth.
    {"4k3/8/8/8/8/8/8/4K3 x KXq - 12 34 tail", true, 2, WHITE, 9, NO_SQUARE, 12, 34},
    {"4k3/8/8/8/8/8/8/4K3 w - h8 0 1", true, 2, WHITE, 0, H8, 0, 1},
    {"4k3/8/8/8/8/8/8/4K3 w - e9 3 1", true, 2, WHITE, 0, NO_SQUARE, 3, 1},
    {"4k3/8/8/8/8/8/8/4K3 w - - 4294967295 4294967297", true, 2, WHITE, 0, NO_SQUARE, -1, 1},
    // Two blanks shift every later field by one character.
    {"4k3/8/8/8/8/8/8/4K3  b KQ - 0 1", true, 2, WHITE, 0, NO_SQUARE, -3, 0},
    // Unusable board fields keep what was read.
    {"4k3/8/X b KQ e3 5 6", false, 1, WHITE, 0, NO_SQUARE, 0, 0},
    {"4k3/9 b KQ e3 5 6", false, 1, WHITE, 0, NO_SQUARE, 0, 0},
    {"8k b", false, 0, WHITE, 0, NO_SQUARE, 0, 0},
    {"8/8/8/8/8/8/8/7K/k b", false, 1, WHITE, 0, NO_SQUARE, 0, 0},
    {"88888888/8/k w - - 0 1", true, 1, WHITE, 0, NO_SQUARE, 0, 1},
};

TEST(Fen, FieldsAndDefaults) {
    for (const FenRow& row : FEN_ROWS) {
        SCOPED_TRACE(row.fen);
        Position position = position_from(starting_fen); // a used record
        position.undo_count = 3;
        EXPECT_EQ(position_set_fen(position, row.fen), row.usable);
        EXPECT_TRUE(views_agree(position));
        EXPECT_EQ(popcount(position.all_pieces), row.pieces);
        EXPECT_EQ(position.side, row.side);
        EXPECT_EQ(position.castling, row.castling);
        EXPECT_EQ(position.ep_square, row.ep_square);
        EXPECT_EQ(position.halfmove, row.halfmove);
        EXPECT_EQ(position.fullmove, row.fullmove);
        EXPECT_EQ(position.undo_count, 0);
        EXPECT_EQ(position.psq, compute_psq(position));
        EXPECT_EQ(position.pawn_key, compute_pawn_key(position));
        // After a failure the castling field was never read, and so never hashed.
        EXPECT_EQ(position.key, compute_key(position) ^ (row.usable ? 0 : castling_keys[0]));
    }
}
