// The transposition table: one slot for each index, no buckets. search() and quiescence() read
// and write it, and the Hash option resizes it. If it cannot be allocated the engine runs without
// one: every read is a miss and every write does nothing.
#pragma once

#include "board/types.h"
#include "search/score_scale.h"

#include <cstdint>

namespace brindlemoth {

constexpr std::uint8_t BOUND_EXACT = 0;
constexpr std::uint8_t BOUND_LOWER = 1;
constexpr std::uint8_t BOUND_UPPER = 2;

struct TTEntry {
    Key key;            // whole key of the position; 0 in a slot never written
    std::int16_t score; // in table form, see score_from_table()
    Move move;          // best move found, or MOVE_NONE
    std::uint8_t depth; // remaining depth of the search that wrote it; 0 from quiescence
    std::uint8_t bound;
    std::uint8_t generation; // tt_generation when it was written
};
static_assert(sizeof(TTEntry) == 16);

extern TTEntry* tt_table;            // nullptr when there is none
extern std::uint64_t tt_entry_count; // a power of two

// Replaces the table by an empty one of the largest power of two of entries that fits into the
// given MiB, at least 2 entries, all of its memory touched. If that fails there is no table.
void tt_resize(int megabytes);
// Empties the table, if there is one.
void tt_clear();
void tt_release();

// A mate-range score counts from the root in the search, and from the node that stored it in an
// entry.
constexpr int score_to_table(int score, int ply) {
    return score >= MATE_BOUND ? score + ply : score <= -MATE_BOUND ? score - ply : score;
}
constexpr int score_from_table(int stored, int ply) {
    return stored >= MATE_BOUND ? stored - ply : stored <= -MATE_BOUND ? stored + ply : stored;
}

// The entry of the key, or nullptr on a miss.
inline const TTEntry* tt_probe(Key key) {
    if (tt_table == nullptr)
        return nullptr;
    const TTEntry& entry = tt_table[key & (tt_entry_count - 1)];
    return entry.key == key ? &entry : nullptr;
}

// Whether a stored score cuts off a node with this window.
constexpr bool tt_bound_cuts(int bound, int score, int alpha, int beta) {
    return bound == BOUND_EXACT || (bound == BOUND_LOWER && score >= beta) ||
           (bound == BOUND_UPPER && score <= alpha);
}

// Writes an entry, unless its slot holds another position of this generation at greater depth.
void tt_store(Key key, int score, std::uint8_t bound, int depth, Move move, int ply);

// Prefetches the slot of a key into the cache.
inline void tt_prefetch(Key key) {
    if (tt_table != nullptr)
        __builtin_prefetch(&tt_table[key & (tt_entry_count - 1)]);
}

} // namespace brindlemoth
