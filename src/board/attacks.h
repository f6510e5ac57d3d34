// Precomputed attack tables: leapers by square, sliders by magic multiplication.
// init_attacks() fills everything once at start-up; afterwards all of it is read-only.
#pragma once

#include "board/types.h"

namespace brindlemoth {

// One slider square: its attack set for an occupancy stands at
// attacks[((occupancy & mask) * magic) >> shift].
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

// Slider lookups. The occupancy may hold any bits; the first piece on a ray is part of the set.
inline Bitboard bishop_attacks(int square, Bitboard occupancy) {
    const MagicEntry& m = bishop_magics[square];
    return m.attacks[((occupancy & m.mask) * m.magic) >> m.shift];
}
inline Bitboard rook_attacks(int square, Bitboard occupancy) {
    const MagicEntry& m = rook_magics[square];
    return m.attacks[((occupancy & m.mask) * m.magic) >> m.shift];
}
inline Bitboard queen_attacks(int square, Bitboard occupancy) {
    return bishop_attacks(square, occupancy) | rook_attacks(square, occupancy);
}

// The same sets by walking the rays, as start-up does to fill the tables: slow, for tests.
Bitboard bishop_attacks_slow(int square, Bitboard occupancy);
Bitboard rook_attacks_slow(int square, Bitboard occupancy);

} // namespace brindlemoth
