// Precomputed attack tables: pawns, knights and kings by square, sliders by square and relevant
// occupancy. init_attacks() fills them at start-up, and nothing changes them afterwards.
#pragma once

#include "board/types.h"

#include <cstddef>

// PEXT (BMI2) replaces the magic multiplication where it is fast. AMD processors before Zen 3 have
// it in microcode, which takes many times as long as the multiplication.
#if defined(__BMI2__) && !defined(__znver1__) && !defined(__znver2__) &&                           \
    !defined(BRINDLEMOTH_NO_PEXT)
#define BRINDLEMOTH_USE_PEXT
#include <immintrin.h>
#endif

namespace brindlemoth {

// A slider on one square: attacks[slider_index()] is its attack set for an occupancy.
struct MagicEntry {
    Bitboard mask; // relevant occupancy squares
    Bitboard magic;
    const Bitboard* attacks; // this square's block in bishop_table or rook_table
    int shift;               // 64 minus the number of bits in mask
};

extern Bitboard pawn_attacks[2][64]; // by colour, square
extern Bitboard knight_attacks[64];
extern Bitboard king_attacks[64];
extern MagicEntry bishop_magics[64];
extern MagicEntry rook_magics[64];

// Fills the tables and searches the magics with a fixed seed. Called once.
void init_attacks();

// The index of an occupancy in the square's block, from 0 to 2^(bits in mask) - 1. Bits of the
// occupancy outside mask have no effect.
inline std::size_t slider_index(const MagicEntry& entry, Bitboard occupancy) {
#ifdef BRINDLEMOTH_USE_PEXT
    return _pext_u64(occupancy, entry.mask);
#else
    return ((occupancy & entry.mask) * entry.magic) >> entry.shift;
#endif
}

// Slider lookups. The occupancy may hold any bits; the first piece on a ray is part of the set.
inline Bitboard bishop_attacks(int square, Bitboard occupancy) {
    const MagicEntry& entry = bishop_magics[square];
    return entry.attacks[slider_index(entry, occupancy)];
}
inline Bitboard rook_attacks(int square, Bitboard occupancy) {
    const MagicEntry& entry = rook_magics[square];
    return entry.attacks[slider_index(entry, occupancy)];
}
inline Bitboard queen_attacks(int square, Bitboard occupancy) {
    return bishop_attacks(square, occupancy) | rook_attacks(square, occupancy);
}

// Squares that a piece of that type attacks. The colour matters for pawns only, the occupancy for
// sliders only. 0 for a type outside PAWN to KING.
template <int Type> inline Bitboard attacks_from(int square, int colour, Bitboard occupancy) {
    switch (Type) {
    case PAWN:
        return pawn_attacks[colour][square];
    case KNIGHT:
        return knight_attacks[square];
    case BISHOP:
        return bishop_attacks(square, occupancy);
    case ROOK:
        return rook_attacks(square, occupancy);
    case QUEEN:
        return queen_attacks(square, occupancy);
    case KING:
        return king_attacks[square];
    default:
        return 0;
    }
}

// The same sets, found by walking the rays. Start-up fills the tables in this way. Slow, for tests.
Bitboard bishop_attacks_slow(int square, Bitboard occupancy);
Bitboard rook_attacks_slow(int square, Bitboard occupancy);

} // namespace brindlemoth
