// The search for the magic multipliers of the sliders, run afresh at every start. Called by
// init_attacks() alone.
#pragma once

#include "board/types.h"

namespace brindlemoth {

constexpr int MAX_MAGIC_BITS = 12;

// What a slider attacks from one square, for every subset of the squares whose occupancy matters.
struct OccupancyList {
    Bitboard mask;                             // those squares
    int bits;                                  // their number
    int count;                                 // 2^bits
    Bitboard occupancies[1 << MAX_MAGIC_BITS]; // fewest men first, beginning with none
    Bitboard attacks[1 << MAX_MAGIC_BITS];
};

// Returns a multiplier that maps every occupancy of the list to a table index of `bits` bits
// without a harmful clash. After 100,000,000 failed candidates it says so on standard error and
// returns 0. The candidates come from one random stream with a fixed seed, which every call
// continues: in a fixed order of the squares the same magics are found every time.
Bitboard find_magic(int square, const OccupancyList& list);

} // namespace brindlemoth
