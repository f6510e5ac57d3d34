#include "board/attacks.h"

#include "board/bitboard.h"
#include "board/magic_search.h"

#include <array>

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

constexpr std::array<Step, 8> KNIGHT_STEPS = {
    {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}};
constexpr std::array<Step, 8> KING_STEPS = {
    {{0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}}};
constexpr std::array<Step, 4> BISHOP_STEPS = {{{1, 1}, {1, -1}, {-1, -1}, {-1, 1}}};
constexpr std::array<Step, 4> ROOK_STEPS = {{{0, 1}, {1, 0}, {0, -1}, {-1, 0}}};

Bitboard walk_steps(int square, const std::array<Step, 8>& steps) {
    Bitboard attacks = 0;
    for (const Step step : steps) {
        const int file = file_of(square) + step.file;
        const int rank = rank_of(square) + step.rank;
        if (on_board(file, rank))
            attacks |= square_bit(make_square(file, rank));
    }
    return attacks;
}

// Each ray ends at the edge of the board or at the first occupied square, which belongs to it.
Bitboard walk_rays(int square, Bitboard occupancy, const std::array<Step, 4>& steps) {
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

// The squares that can block: all squares of the rays but the last, which has none behind it.
Bitboard find_relevant_mask(int square, const std::array<Step, 4>& steps) {
    Bitboard mask = 0;
    for (const Step step : steps) {
        int file = file_of(square) + step.file;
        int rank = rank_of(square) + step.rank;
        while (on_board(file + step.file, rank + step.rank)) {
            mask |= square_bit(make_square(file, rank));
            file += step.file;
            rank += step.rank;
        }
    }
    return mask;
}

// Each occupancy is an earlier one with one piece added below its lowest. So every occupancy comes
// once, and those of fewer pieces come first.
void list_occupancies(OccupancyList& list, int square, const std::array<Step, 4>& steps) {
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
void init_sliders(MagicEntry (&entries)[64], Bitboard* block, const std::array<Step, 4>& steps) {
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
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        for (int colour = WHITE; colour <= BLACK; ++colour)
            pawn_attacks[colour][square] = pawn_attack_set(square_bit(square), colour);
        knight_attacks[square] = walk_steps(square, KNIGHT_STEPS);
        king_attacks[square] = walk_steps(square, KING_STEPS);
    }

    // The magics depend on this order.
    init_sliders(bishop_magics, bishop_table, BISHOP_STEPS);
    init_sliders(rook_magics, rook_table, ROOK_STEPS);
}

} // namespace brindlemoth
