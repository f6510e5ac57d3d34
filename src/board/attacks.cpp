#include "board/attacks.h"

#include "board/bitboard.h"
#include "board/magic_search.h"

#include <span>

namespace brindlemoth {

Bitboard pawn_attacks[2][64];
Bitboard knight_attacks[64];
Bitboard king_attacks[64];
MagicEntry bishop_magics[64];
MagicEntry rook_magics[64];

namespace {

// The packed attack sets: 5,248 entries for bishops and 102,400 for rooks are in use.
Bitboard bishop_table[32768];
Bitboard rook_table[262144];

struct Step {
    int file;
    int rank;
};

constexpr Step KNIGHT_STEPS[] = {{1, 2},   {2, 1},   {2, -1}, {1, -2},
                                 {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
constexpr Step KING_STEPS[] = {{0, 1},  {1, 1},   {1, 0},  {1, -1},
                               {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}};
constexpr Step BISHOP_STEPS[] = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
constexpr Step ROOK_STEPS[] = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}};

// Each ray ends at the edge of the board or at the first occupied square, which belongs to it. On a
// full board only one step remains of each ray.
Bitboard walk_rays(int square, Bitboard occupancy, std::span<const Step> steps) {
    Bitboard attacks = 0;
    for (const Step step : steps) {
        int file = file_of(square) + step.file;
        int rank = rank_of(square) + step.rank;
        while (on_board(file, rank)) {
            const Bitboard bit = square_bit(make_square(file, rank));
            attacks |= bit;
            if (occupancy & bit)
                break;
            file += step.file;
            rank += step.rank;
        }
    }
    return attacks;
}

// The squares that can block: all squares of the rays but the last, which lies on an edge of the
// board that the slider is not on.
Bitboard find_relevant_mask(int square, std::span<const Step> steps) {
    const Bitboard edges = ((FILE_A | FILE_H) & ~file_mask(file_of(square))) |
                           ((RANK_1 | RANK_8) & ~rank_mask(rank_of(square)));
    return walk_rays(square, 0, steps) & ~edges;
}

// Each occupancy is an earlier one with one piece added below its lowest. So every occupancy comes
// once, and those of fewer pieces come first.
void list_occupancies(OccupancyList& list, int square, std::span<const Step> steps) {
    list.mask = find_relevant_mask(square, steps);
    list.bits = popcount(list.mask);
    list.occupancies[0] = 0;
    list.count = 1;
    for (int i = 0; i < list.count; ++i) {
        const Bitboard occupancy = list.occupancies[i];
        list.attacks[i] = walk_rays(square, occupancy, steps);
        for (Bitboard below = list.mask & ~occupancy & (occupancy - 1); below != 0;)
            list.occupancies[list.count++] = occupancy | square_bit(pop_highest(below));
    }
}

// Fills the entries and writes their attack sets one after the other, starting at `block`.
void init_sliders(MagicEntry (&entries)[64], Bitboard* block, std::span<const Step> steps) {
    static OccupancyList list;
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        list_occupancies(list, square, steps);
        MagicEntry& entry = entries[square];
        entry.mask = list.mask;
        entry.shift = 64 - list.bits;
        entry.attacks = block;
        entry.magic = find_magic(square, list);
        for (int i = 0; i < list.count; ++i)
            block[slider_index(entry, list.occupancies[i])] = list.attacks[i];
        block += list.count;
    }
}

} // namespace

Bitboard bishop_attacks_slow(int square, Bitboard occupancy) {
    return walk_rays(square, occupancy, BISHOP_STEPS);
}

Bitboard rook_attacks_slow(int square, Bitboard occupancy) {
    return walk_rays(square, occupancy, ROOK_STEPS);
}

void init_attacks() {
    constexpr Bitboard FULL_BOARD = ~Bitboard{0};
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        for (int colour = WHITE; colour <= BLACK; ++colour)
            pawn_attacks[colour][square] = pawn_attack_set(square_bit(square), colour);
        knight_attacks[square] = walk_rays(square, FULL_BOARD, KNIGHT_STEPS);
        king_attacks[square] = walk_rays(square, FULL_BOARD, KING_STEPS);
    }

    // The magics depend on this order.
    init_sliders(bishop_magics, bishop_table, BISHOP_STEPS);
    init_sliders(rook_magics, rook_table, ROOK_STEPS);
}

} // namespace brindlemoth
