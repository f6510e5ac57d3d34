#include "board/attacks.h"

#include "board/bitboard.h"

#include <array>
#include <cstdio>

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

constexpr bool on_board(int file, int rank) {
    return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

Bitboard leaper_attacks(int square, const std::array<Step, 8>& steps) {
    Bitboard attacks = 0;
    for (const Step step : steps) {
        const int file = file_of(square) + step.file;
        const int rank = rank_of(square) + step.rank;
        if (on_board(file, rank))
            attacks |= square_bit(make_square(file, rank));
    }
    return attacks;
}

// Each ray runs outward to the board's edge or to the first occupied square, that one included.
Bitboard ray_attacks(int square, Bitboard occupancy, const std::array<Step, 4>& steps) {
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

// The squares whose occupancy matters: a ray's last square never blocks anything.
Bitboard relevant_mask(int square, const std::array<Step, 4>& steps) {
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

// The subset of mask whose members are chosen by the bits of index, lowest square first.
Bitboard mask_subset(unsigned index, Bitboard mask) {
    Bitboard subset = 0;
    for (; mask != 0; index >>= 1) {
        const int square = pop_lowest(mask);
        if (index & 1U)
            subset |= square_bit(square);
    }
    return subset;
}

// The subset after this one when the subsets of mask are counted with the highest square as the
// lowest digit; the empty subset follows the whole mask.
Bitboard next_subset_from_the_top(Bitboard subset, Bitboard mask) {
    while (mask != 0) {
        const Bitboard top = square_bit(63 - std::countl_zero(mask));
        subset ^= top;
        if (subset & top)
            break;
        mask ^= top;
    }
    return subset;
}

constexpr int MAX_MAGIC_BITS = 12;
constexpr int MAX_MAGIC_ATTEMPTS = 100'000'000;

// One state serves all 128 searches, one behind the other.
std::uint64_t magic_rng_state = 0x1234567890ABCDEFULL;

std::uint64_t next_magic_random() {
    std::uint64_t x = magic_rng_state;
    x ^= x >> 12;
    x ^= x << 25;
    x ^= x >> 27;
    magic_rng_state = x;
    return x * 0x2545F4914F6CDD1DULL;
}

// Sets up one slider square whose attack sets begin at `block`; returns the end of the block.
Bitboard* init_slider_square(MagicEntry& entry, int square, Bitboard* block,
                             const std::array<Step, 4>& steps, SliderAttacks slow_attacks) {
    const Bitboard mask = relevant_mask(square, steps);
    const int bits = popcount(mask);
    entry.mask = mask;
    entry.shift = 64 - bits;
    entry.attacks = block;
    entry.magic = find_magic(square, mask, bits, slow_attacks);
    const unsigned size = 1U << bits;
    for (unsigned i = 0; i < size; ++i) {
        const Bitboard subset = mask_subset(i, mask);
        block[(subset * entry.magic) >> entry.shift] = slow_attacks(square, subset);
    }
    return block + size;
}

} // namespace

Bitboard bishop_attacks_slow(int square, Bitboard occupancy) {
    return ray_attacks(square, occupancy, BISHOP_STEPS);
}

Bitboard rook_attacks_slow(int square, Bitboard occupancy) {
    return ray_attacks(square, occupancy, ROOK_STEPS);
}

Bitboard find_magic(int square, Bitboard mask, int bits, SliderAttacks slow_attacks) {
    // A scratch entry counts as free unless this very candidate wrote it, so that a new trial
    // starts with an empty table at no cost.
    struct Scratch {
        Bitboard attacks;
        std::uint64_t candidate;
    };
    static Scratch scratch[1 << MAX_MAGIC_BITS];
    static Bitboard subsets[1 << MAX_MAGIC_BITS];
    static Bitboard attack_sets[1 << MAX_MAGIC_BITS];

    const unsigned size = 1U << bits;
    const int shift = 64 - bits;
    // Any order of the subsets gives the same verdict on a candidate. Counting through them with
    // the highest squares changing fastest finds most clashes soonest.
    Bitboard subset = 0;
    for (unsigned i = 0; i < size; ++i) {
        subsets[i] = subset;
        attack_sets[i] = slow_attacks(square, subset);
        scratch[i] = {0, 0};
        subset = next_subset_from_the_top(subset, mask);
    }

    for (int attempt = 0; attempt < MAX_MAGIC_ATTEMPTS; ++attempt) {
        std::uint64_t candidate = next_magic_random();
        candidate &= next_magic_random();
        candidate &= next_magic_random();
        if (popcount((candidate * mask) & 0xFF00000000000000ULL) < 6)
            continue;
        bool clash = false;
        for (unsigned i = 0; i < size && !clash; ++i) {
            Scratch& entry = scratch[(candidate * subsets[i]) >> shift];
            clash = entry.candidate == candidate && entry.attacks != attack_sets[i];
            entry = {attack_sets[i], candidate};
        }
        if (!clash)
            return candidate;
    }
    std::fprintf(stderr, "FATAL: failed to find magic for sq %d\n", square);
    return 0;
}

void init_attacks() {
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        for (int colour = WHITE; colour <= BLACK; ++colour)
            pawn_attacks[colour][square] = pawn_attack_set(square_bit(square), colour);
        knight_attacks[square] = leaper_attacks(square, KNIGHT_STEPS);
        king_attacks[square] = leaper_attacks(square, KING_STEPS);
    }

    // The order of the squares and the seed together fix every magic.
    Bitboard* block = bishop_table;
    for (int square = 0; square < SQUARE_COUNT; ++square)
        block = init_slider_square(bishop_magics[square], square, block, BISHOP_STEPS,
                                   bishop_attacks_slow);
    block = rook_table;
    for (int square = 0; square < SQUARE_COUNT; ++square)
        block =
            init_slider_square(rook_magics[square], square, block, ROOK_STEPS, rook_attacks_slow);
}

} // namespace brindlemoth
