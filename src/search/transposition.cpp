#include "search/transposition.h"

#include "platform/large_memory.h"
#include "search/search_state.h"

#include <algorithm>
#include <cstring>

namespace brindlemoth {

TTEntry* tt_table;
std::uint64_t tt_entry_count;

namespace {

constexpr int MAX_ENTRY_DEPTH = 255;

// Writes to each page of the table. The system finds and clears a page at the first write, which
// would take time in the middle of a search.
void touch_pages() {
    constexpr std::uint64_t SMALLEST_PAGE = 4096;
    constexpr std::uint64_t ENTRIES_ON_PAGE = SMALLEST_PAGE / sizeof(TTEntry);
    if (tt_table != nullptr)
        for (std::uint64_t i = 0; i < tt_entry_count; i += ENTRIES_ON_PAGE)
            tt_table[i] = TTEntry{};
}

} // namespace

void tt_resize(int megabytes) {
    tt_release();
    const std::uint64_t bytes = static_cast<std::uint64_t>(megabytes) << 20;
    std::uint64_t count = 1;
    do
        count *= 2;
    while (count * 2 * sizeof(TTEntry) <= bytes);
    tt_entry_count = count;
    tt_table = static_cast<TTEntry*>(allocate_large(count * sizeof(TTEntry)));
    touch_pages();
}

void tt_clear() {
    if (tt_table != nullptr)
        std::memset(static_cast<void*>(tt_table), 0, tt_entry_count * sizeof(TTEntry));
}

void tt_release() {
    release_large(tt_table, tt_entry_count * sizeof(TTEntry));
    tt_table = nullptr;
    tt_entry_count = 0;
}

void tt_store(Key key, int score, std::uint8_t bound, int depth, Move move, int ply) {
    if (tt_table == nullptr)
        return;
    TTEntry& entry = tt_table[key & (tt_entry_count - 1)];
    if (entry.key != 0 && entry.key != key && entry.generation == tt_generation &&
        depth < entry.depth)
        return;
    entry.key = key;
    entry.score = static_cast<std::int16_t>(score_to_table(score, ply));
    entry.move = move;
    entry.depth = static_cast<std::uint8_t>(std::min(depth, MAX_ENTRY_DEPTH));
    entry.bound = bound;
    entry.generation = tt_generation;
}

} // namespace brindlemoth
