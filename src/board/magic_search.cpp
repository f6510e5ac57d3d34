#include "board/magic_search.h"

#include "board/bitboard.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace brindlemoth {

namespace {

// The random numbers are the outputs of an xorshift64* generator. A step of its state is linear
// over the bits, so that any number of steps at once is the product with a matrix: places of the
// stream far apart, the lanes, can be worked out side by side.

constexpr std::uint64_t STREAM_SEED = 0x1234567890ABCDEFULL;
constexpr std::uint64_t OUTPUT_FACTOR = 0x2545F4914F6CDD1DULL;
constexpr int LANES = 16;
constexpr int LANE_LENGTH = 128; // candidates; a power of two
constexpr int BLOCK_SIZE = LANES * LANE_LENGTH;

constexpr std::uint64_t next_state(std::uint64_t x) {
    x ^= x >> 12;
    x ^= x << 25;
    x ^= x >> 27;
    return x;
}

// A fixed number of steps: what becomes of each bit of the state.
struct Jump {
    std::uint64_t columns[64];
};

std::uint64_t jump_ahead(const Jump& jump, std::uint64_t state) {
    std::uint64_t sum = 0;
    while (state != 0)
        sum ^= jump.columns[pop_lowest(state)];
    return sum;
}

// The steps of one lane: three for each candidate.
Jump lane_jump() {
    Jump jump;
    for (int bit = 0; bit < 64; ++bit)
        jump.columns[bit] = next_state(next_state(next_state(1ULL << bit)));
    for (int candidates = 1; candidates < LANE_LENGTH; candidates *= 2) {
        const Jump half = jump;
        for (std::uint64_t& column : jump.columns)
            column = jump_ahead(half, column);
    }
    return jump;
}

// Of the generator, behind the block of candidates drawn last. Never reset, so that all searches
// share one stream.
std::uint64_t magic_rng_state = STREAM_SEED;

// A stretch of the stream of candidates.
struct CandidateBlock {
    const Bitboard* next = candidates + BLOCK_SIZE;
    Bitboard candidates[BLOCK_SIZE];
};

void refill(CandidateBlock& block) {
    static const Jump jump = lane_jump();
    // The three states of each candidate, the lanes side by side.
    static std::uint64_t first[BLOCK_SIZE];
    static std::uint64_t second[BLOCK_SIZE];
    static std::uint64_t third[BLOCK_SIZE + LANES];

    // Each lane begins where the one before it ends.
    third[0] = magic_rng_state;
    for (int lane = 1; lane < LANES; ++lane)
        third[lane] = jump_ahead(jump, third[lane - 1]);
    for (int row = 0; row < BLOCK_SIZE; row += LANES) {
        for (int i = row; i < row + LANES; ++i) {
            first[i] = next_state(third[i]);
            second[i] = next_state(first[i]);
            third[i + LANES] = next_state(second[i]);
        }
    }
    magic_rng_state = third[BLOCK_SIZE + LANES - 1];

    // Back in the order of the stream. Three outputs are ANDed, so that few bits are set.
    Bitboard* out = block.candidates;
    for (int lane = 0; lane < LANES; ++lane)
        for (int i = lane; i < BLOCK_SIZE; i += LANES)
            *out++ = (first[i] * OUTPUT_FACTOR) & (second[i] * OUTPUT_FACTOR) &
                     (third[i + LANES] * OUTPUT_FACTOR);
    block.next = block.candidates;
}

constexpr int MAX_MAGIC_ATTEMPTS = 100'000'000;
constexpr int MIN_TOP_BITS = 6; // of the top byte of candidate times mask

// Notes which candidates from `first` to `end` pass the quick filter; returns the end of the notes.
// Without a branch, since one in eight passes and nothing tells which.
const Bitboard** filter_candidates(const Bitboard* first, const Bitboard* end, Bitboard mask,
                                   const Bitboard** notes) {
    for (const Bitboard* candidate = first; candidate != end; ++candidate) {
        *notes = candidate;
        notes += popcount((*candidate * mask) >> 56) >= MIN_TOP_BITS ? 1 : 0;
    }
    return notes;
}

// A man alone on the board must not share index 0 with the empty board, where the slider attacks
// more. Five of six candidates that pass the filter fail here.
struct LoneManTest {
    int shifts[4];       // together they spread a bit over as many places as an index has bits
    Bitboard top_places; // bit 63 - s for each square s of the mask
};

LoneManTest lone_man_test(const OccupancyList& list) {
    LoneManTest test{};
    int width = 1;
    for (int& shift : test.shifts) {
        shift = std::min(width, list.bits - width);
        width += shift;
    }
    for (Bitboard rest = list.mask; rest != 0;)
        test.top_places |= square_bit(63 - pop_lowest(rest));
    return test;
}

// The index of a man alone on square s is the bits of the candidate from place 63 - s down: if one
// of them is set, the upward spread reaches that place.
bool lone_man_clashes(const LoneManTest& test, Bitboard candidate) {
    Bitboard spread = candidate;
    for (const int shift : test.shifts)
        spread |= spread << shift;
    return (test.top_places & ~spread) != 0;
}

// Whether two occupancies with different attack sets share an index. Fewest men first finds most
// clashes soonest.
bool any_clash(const OccupancyList& list, Bitboard candidate) {
    // An entry counts as free unless this very trial wrote it, so that each starts with an empty
    // table at no cost.
    struct Entry {
        Bitboard attacks;
        std::uint64_t trial;
    };
    static Entry table[1 << MAX_MAGIC_BITS];
    static std::uint64_t trial = 0;
    ++trial;
    for (int i = 0; i < list.count; ++i) {
        Entry& entry = table[(candidate * list.occupancies[i]) >> (64 - list.bits)];
        if (entry.trial == trial && entry.attacks != list.attacks[i])
            return true;
        entry = {list.attacks[i], trial};
    }
    return false;
}

} // namespace

Bitboard find_magic(int square, const OccupancyList& list) {
    static CandidateBlock block;
    static const Bitboard* survivors[BLOCK_SIZE + 1];
    const Bitboard* const block_end = block.candidates + BLOCK_SIZE;
    const LoneManTest lone_man = lone_man_test(list);

    for (std::ptrdiff_t attempts_left = MAX_MAGIC_ATTEMPTS; attempts_left > 0;) {
        if (block.next == block_end)
            refill(block);
        const Bitboard* const end = block.next + std::min(attempts_left, block_end - block.next);
        const Bitboard** const survivors_end =
            filter_candidates(block.next, end, list.mask, survivors);
        for (const Bitboard** survivor = survivors; survivor != survivors_end; ++survivor) {
            const Bitboard candidate = **survivor;
            if (!lone_man_clashes(lone_man, candidate) && !any_clash(list, candidate)) {
                block.next = *survivor + 1;
                return candidate;
            }
        }
        attempts_left -= end - block.next;
        block.next = end;
    }
    std::fprintf(stderr, "FATAL: failed to find magic for sq %d\n", square);
    return 0;
}

} // namespace brindlemoth
