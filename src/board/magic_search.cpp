#include "board/magic_search.h"

#include "board/bitboard.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace brindlemoth {

namespace {

// The random numbers are the outputs of an xorshift64* generator. Each state depends on the one
// before it, so a plain loop computes one number at a time, and the searches draw 14.5 million
// candidates of three numbers each. A step is linear over the bits of the state, so any number of
// steps is the product with one bit matrix. This jump gives the state at 16 places of the stream,
// and the numbers behind these places, the lanes, are computed at the same time by vector
// instructions.

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

// The matrix of a fixed number of steps: column b is the result for the state with bit b alone.
struct Jump {
    std::uint64_t columns[64];
};

std::uint64_t apply_jump(const Jump& jump, std::uint64_t state) {
    std::uint64_t sum = 0;
    while (state != 0)
        sum ^= jump.columns[pop_lowest(state)];
    return sum;
}

// The jump over one lane: three steps for each candidate.
Jump make_lane_jump() {
    Jump jump;
    for (int bit = 0; bit < 64; ++bit)
        jump.columns[bit] = next_state(next_state(next_state(1ULL << bit)));
    for (int candidates = 1; candidates < LANE_LENGTH; candidates *= 2) {
        const Jump half = jump;
        for (std::uint64_t& column : jump.columns)
            column = apply_jump(half, column);
    }
    return jump;
}

// The state of the generator after the last block of candidates. It is never reset, so all searches
// share one stream.
std::uint64_t magic_rng_state = STREAM_SEED;

// Consecutive candidates of the stream.
struct CandidateBlock {
    const Bitboard* next = candidates + BLOCK_SIZE; // the first that is not tested yet
    Bitboard candidates[BLOCK_SIZE];
};

void refill(CandidateBlock& block) {
    static const Jump jump = make_lane_jump();
    // The three states of each candidate. Element LANES * i + k is candidate i of lane k.
    static std::uint64_t first[BLOCK_SIZE];
    static std::uint64_t second[BLOCK_SIZE];
    static std::uint64_t third[BLOCK_SIZE + LANES];

    // Each lane begins where the one before it ends.
    third[0] = magic_rng_state;
    for (int lane = 1; lane < LANES; ++lane)
        third[lane] = apply_jump(jump, third[lane - 1]);
    for (int row = 0; row < BLOCK_SIZE; row += LANES) {
        for (int i = row; i < row + LANES; ++i) {
            first[i] = next_state(third[i]);
            second[i] = next_state(first[i]);
            third[i + LANES] = next_state(second[i]);
        }
    }
    magic_rng_state = third[BLOCK_SIZE + LANES - 1];

    // Write the candidates in the order of the stream. Each is the AND of three outputs, which has
    // few bits set.
    Bitboard* out = block.candidates;
    for (int lane = 0; lane < LANES; ++lane)
        for (int i = lane; i < BLOCK_SIZE; i += LANES)
            *out++ = (first[i] * OUTPUT_FACTOR) & (second[i] * OUTPUT_FACTOR) &
                     (third[i + LANES] * OUTPUT_FACTOR);
    block.next = block.candidates;
}

constexpr int MAX_MAGIC_ATTEMPTS = 100'000'000;
constexpr int MIN_TOP_BITS = 6; // of the top byte of candidate times mask

// Writes the candidates from `first` to `end` that pass the quick filter to `passed`, and returns
// the end of what it wrote. The loop has no branch, because the processor could not predict it: one
// candidate in eight passes.
const Bitboard** filter_candidates(const Bitboard* first, const Bitboard* end, Bitboard mask,
                                   const Bitboard** passed) {
    for (const Bitboard* candidate = first; candidate != end; ++candidate) {
        *passed = candidate;
        passed += popcount((*candidate * mask) >> 56) >= MIN_TOP_BITS ? 1 : 0;
    }
    return passed;
}

// A quick test for one kind of clash: a single piece on the board must not have index 0, the index
// of the empty board, because the slider attacks more squares there. Five of six candidates that
// pass the filter fail this test.
struct SinglePieceTest {
    int shifts[4];       // together they spread a bit over as many places as an index has bits
    Bitboard top_places; // bit 63 - s for each square s of the mask
};

SinglePieceTest make_single_piece_test(const OccupancyList& list) {
    SinglePieceTest test{};
    int width = 1;
    for (int& shift : test.shifts) {
        shift = std::min(width, list.bits - width);
        width += shift;
    }
    for (Bitboard rest = list.mask; rest != 0;)
        test.top_places |= square_bit(63 - pop_lowest(rest));
    return test;
}

// The index of a single piece on square s consists of the bits of the candidate from place 63 - s
// down. If one of them is set, spreading the bits upward reaches that place.
bool has_single_piece_clash(const SinglePieceTest& test, Bitboard candidate) {
    Bitboard spread = candidate;
    for (const int shift : test.shifts)
        spread |= spread << shift;
    return (test.top_places & ~spread) != 0;
}

// Whether two occupancies with different attack sets share an index.
bool has_clash(const OccupancyList& list, Bitboard candidate) {
    // An entry is free unless its trial is the present one, so the table need not be cleared.
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
    const SinglePieceTest single_piece_test = make_single_piece_test(list);

    for (std::ptrdiff_t attempts_left = MAX_MAGIC_ATTEMPTS; attempts_left > 0;) {
        if (block.next == block_end)
            refill(block);
        const Bitboard* const end = block.next + std::min(attempts_left, block_end - block.next);
        const Bitboard** const survivors_end =
            filter_candidates(block.next, end, list.mask, survivors);
        for (const Bitboard** survivor = survivors; survivor != survivors_end; ++survivor) {
            const Bitboard candidate = **survivor;
            if (!has_single_piece_clash(single_piece_test, candidate) &&
                !has_clash(list, candidate)) {
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
