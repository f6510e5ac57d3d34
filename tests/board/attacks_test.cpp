#include "board/attacks.h"
#include "board/bitboard.h"

#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {
namespace {

TEST(Magics, FixedSeedFindsTheSameNumbersEveryTime) {
    struct Row {
        const MagicEntry& entry;
        Bitboard magic;
        int bits;
    };
    const Row rows[] = {{bishop_magics[A1], 0x4020011001010028ULL, 6},
                        {bishop_magics[H8], 0x4004840444002200ULL, 6},
                        {bishop_magics[D4], 0x2401004024040002ULL, 9},
                        {rook_magics[A1], 0x0180042210400480ULL, 12},
                        {rook_magics[H8], 0x1000030144241082ULL, 12},
                        {rook_magics[D4], 0x2410004040080401ULL, 10}};
    for (const Row& row : rows) {
        EXPECT_EQ(row.entry.magic, row.magic);
        EXPECT_EQ(row.entry.shift, 64 - row.bits);
        EXPECT_EQ(popcount(row.entry.mask), row.bits);
    }
    EXPECT_EQ(bishop_magics[A1].mask, 0x0040201008040200ULL);
    EXPECT_EQ(rook_magics[A1].mask, 0x000101010101017EULL);
    EXPECT_EQ(rook_magics[H8].mask, 0x7E80808080808000ULL);
}

TEST(Magics, BlocksArePackedWithoutGaps) {
    EXPECT_EQ(bishop_magics[H8].attacks + 64 - bishop_magics[A1].attacks, 5248);
    EXPECT_EQ(rook_magics[H8].attacks + 4096 - rook_magics[A1].attacks, 102400);
}

// Every relevant occupancy of every square, each with random irrelevant pieces around it.
TEST(SliderLookup, EqualsTheRayWalkForEveryOccupancy) {
    std::mt19937_64 random(1);
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        for (const bool bishop : {true, false}) {
            const Bitboard mask = bishop ? bishop_magics[square].mask : rook_magics[square].mask;
            Bitboard subset = 0;
            do {
                const Bitboard occupancy = subset | (random() & ~mask);
                if (bishop)
                    ASSERT_EQ(bishop_attacks(square, occupancy),
                              bishop_attacks_slow(square, occupancy));
                else
                    ASSERT_EQ(rook_attacks(square, occupancy),
                              rook_attacks_slow(square, occupancy));
                subset = (subset - mask) & mask; // the next subset of mask
            } while (subset != 0);
        }
    }
}

} // namespace
} // namespace brindlemoth
