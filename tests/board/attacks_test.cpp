#include "board/attacks.h"
#include "board/bitboard.h"

#include <gtest/gtest.h>
#include <random>

using namespace brindlemoth;

TEST(Magics, FixedSeedFindsTheSameNumbersEveryTime) {
    EXPECT_EQ(bishop_magics[A1].magic, 0x4020011001010028ULL);
    EXPECT_EQ(rook_magics[H8].magic, 0x1000030144241082ULL);
    Bitboard all = 0;
    for (const MagicEntry* table : {bishop_magics, rook_magics})
        for (int square = 0; square < SQUARE_COUNT; ++square)
            all = std::rotl(all, 1) ^ table[square].magic;
    EXPECT_EQ(all, 0x0AD1F55A572F34E1ULL);
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
