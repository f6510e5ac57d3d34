// The search for the magic multipliers of the sliders. init_attacks() calls it at every start.
#pragma once

#include "board/types.h"

namespace brindlemoth {

constexpr int MAX_MAGIC_BITS = 12;

// The attacks of a slider on one square for each occupancy of the squares that can block it. The
// occupancies are in order of their number of pieces, because most clashes of a candidate are
// between occupancies of few pieces.
struct OccupancyList {
    Bitboard mask;                             // the squares that can block
    int bits;                                  // their number
    int count;                                 // 2^bits
    Bitboard occupancies[1 << MAX_MAGIC_BITS]; // the first is 0
    Bitboard attacks[1 << MAX_MAGIC_BITS];
};

// Returns a multiplier that maps each occupancy of the list to an index of `bits` bits, so that
// occupancies with the same index have the same attacks. After 100,000,000 failed candidates it
// prints a message on standard error and returns 0. All calls share one random stream with a fixed
// seed, so the magics depend on the order of the calls and are the same at every start.
Bitboard find_magic(int square, const OccupancyList& list);

} // namespace brindlemoth
