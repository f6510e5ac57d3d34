// King and pawn against king, with every position solved once at start-up. The strong side is the
// one with the pawn. The table holds positions in which it is White and its pawn is on files a to
// d; the caller mirrors all others.
#pragma once

#include "board/types.h"

#include <cstdint>

namespace brindlemoth {

enum : std::uint8_t {
    KPK_INVALID = 0, // not a position of the game
    KPK_DRAW = 2,
    KPK_WIN = 4, // for the side with the pawn
};

constexpr int KPK_SIZE = 6 * 4 * 2 * 64 * 64;

extern std::uint8_t kpk_table[KPK_SIZE];

// Fills kpk_table. Needs the attack tables.
void kpk_init();

// Requires a pawn on files a to d and ranks 2 to 7.
constexpr int kpk_index(int strong_king, int weak_king, int weak_to_move, int pawn) {
    return strong_king | weak_king << 6 | weak_to_move << 12 | file_of(pawn) << 13 |
           (rank_of(pawn) - 1) << 15;
}

} // namespace brindlemoth
