#include "compression/pair_substitution.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <utility>

namespace brindlemoth::tablegen {

// Re-Pair replaces the most frequent pair, again and again. Here each pass over the sequence
// replaces all pairs whose count reaches a threshold. When no pair reaches it any more, the
// threshold becomes this fraction of the greatest count. The result is nearly as small, in far
// fewer passes.
constexpr double ROUND_FRACTION = 0.6;

// A pair becomes a symbol when it occurs at least so often.
constexpr std::uint32_t MIN_PAIR_COUNT = 4;

// A run of two, four, ... values becomes a symbol before any pair is counted when it occurs at
// least so often, and in at least this share of the runs.
constexpr double MIN_RUN_SHARE = 0.0002;

constexpr std::size_t RUN_SYMBOLS = 9; // of 1, 2, 4, ... 256 values
static_assert(1 << (RUN_SYMBOLS - 1) == MAX_SYMBOL_VALUES);

namespace {

struct Pair {
    std::uint16_t left;
    std::uint16_t right;
    std::uint32_t count;
};

constexpr std::uint32_t key_of(std::uint32_t left, std::uint32_t right) {
    return left << 16 | right;
}

// How often each two symbols stand side by side: a hash table with open addressing. Entries whose
// count has fallen to 0 are dropped when the table grows.
class PairCounts {
public:
    struct Entry {
        std::uint32_t key = EMPTY;
        // With CHOSEN, the number of the symbol that replaces the pair.
        std::uint32_t count = 0;
    };
    static constexpr std::uint32_t CHOSEN = std::uint32_t{1} << 31;

    PairCounts() : entries(FIRST_SIZE), shift(32 - std::countr_zero(FIRST_SIZE)) {}

    // The entry of a pair, which is added if there is none. Valid until the next call.
    Entry& at(std::uint32_t key) {
        Entry* entry = &find(key);
        if (entry->key == EMPTY) {
            if (2 * ++used > entries.size()) {
                grow();
                entry = &find(key);
            }
            entry->key = key;
        }
        return *entry;
    }
    const std::vector<Entry>& all() const { return entries; }

private:
    static constexpr std::uint32_t EMPTY = 0xFFFFFFFF; // symbols have 12 bits
    static constexpr std::size_t FIRST_SIZE = 1 << 12;

    Entry& find(std::uint32_t key) {
        // Multiplicative hashing by the golden ratio.
        std::size_t place = key * std::uint32_t{0x9E3779B1} >> shift;
        while (entries[place].key != key && entries[place].key != EMPTY)
            place = (place + 1) & (entries.size() - 1);
        return entries[place];
    }
    void grow() {
        const auto live = static_cast<std::size_t>(std::count_if(
            entries.begin(), entries.end(), [](const Entry& entry) { return entry.count != 0; }));
        std::vector<Entry> old(std::max(FIRST_SIZE, std::bit_ceil(4 * live)));
        old.swap(entries);
        shift = 32 - std::countr_zero(entries.size());
        for (const Entry& entry : old)
            if (entry.count != 0)
                find(entry.key) = entry;
        used = live + 1;
    }

    std::vector<Entry> entries;
    int shift;
    std::size_t used = 0;
};

// The state of a substitution. The counts are always those of the sequence: of each two neighbours
// that together are few enough values for a symbol. Three like symbols in a row count as two pairs.
struct Work {
    Substitution& made;
    std::vector<std::uint16_t> values; // by symbol: how many it stands for
    PairCounts counts;
    // A pair that came to occur this often is added to the candidates.
    std::uint32_t threshold = UINT32_MAX;
    std::vector<std::uint32_t> candidates; // keys; may be there more than once

    bool fits(std::uint16_t left, std::uint16_t right) const {
        return values[left] + values[right] <= MAX_SYMBOL_VALUES;
    }
    void count_up(std::uint16_t left, std::uint16_t right) {
        if (fits(left, right) && ++counts.at(key_of(left, right)).count == threshold)
            candidates.push_back(key_of(left, right));
    }
    void count_down(std::uint16_t left, std::uint16_t right) {
        if (!fits(left, right))
            return;
        std::uint32_t& count = counts.at(key_of(left, right)).count;
        if ((count & PairCounts::CHOSEN) == 0)
            --count;
    }
    std::uint16_t add_symbol(std::uint16_t left, std::uint16_t right) {
        made.symbols.push_back({left, right});
        values.push_back(static_cast<std::uint16_t>(values[left] + values[right]));
        return static_cast<std::uint16_t>(made.symbols.size() - 1);
    }
};

} // namespace

// Step 1: the values that occur become the first symbols, and frequent runs of them the next. The
// sequence is the runs in these symbols, the longest ones first.
static void substitute_runs(Work& work, const std::vector<ValueRun>& runs,
                            std::size_t max_symbols) {
    // By value: how often 1, 2, 4, ... of it occur.
    std::vector<std::array<std::uint32_t, RUN_SYMBOLS>> occurring(MAX_VALUE + 1);
    std::vector<std::uint16_t> found; // values, in the order of the sequence
    for (const ValueRun& run : runs) {
        assert(run.value <= MAX_VALUE);
        if (occurring[run.value][0] == 0)
            found.push_back(run.value);
        for (std::size_t i = 0; i < RUN_SYMBOLS && run.length >> i != 0; ++i)
            occurring[run.value][i] += run.length >> i;
    }
    std::vector<std::vector<std::uint16_t>> symbols(MAX_VALUE + 1); // by value and length
    for (const std::uint16_t value : found) {
        symbols[value] = {static_cast<std::uint16_t>(work.made.symbols.size())};
        work.made.symbols.push_back({value, LEAF});
        work.values.push_back(1);
    }
    const auto least =
        std::max(MIN_PAIR_COUNT,
                 static_cast<std::uint32_t>(MIN_RUN_SHARE * static_cast<double>(runs.size())));
    for (const std::uint16_t value : found) {
        std::vector<std::uint16_t>& own = symbols[value];
        while (own.size() < RUN_SYMBOLS && occurring[value][own.size()] >= least &&
               work.made.symbols.size() < max_symbols)
            own.push_back(work.add_symbol(own.back(), own.back()));
    }
    for (const ValueRun& run : runs) {
        const std::vector<std::uint16_t>& own = symbols[run.value];
        const std::size_t longest = own.size() - 1;
        work.made.sequence.insert(work.made.sequence.end(), run.length >> longest, own[longest]);
        for (std::size_t i = longest; i-- > 0;)
            if ((run.length >> i & 1) != 0)
                work.made.sequence.push_back(own[i]);
    }
}

// The pairs that are to become symbols next: the most frequent candidates that do not compete for a
// symbol between them. Others that are frequent enough remain candidates.
static std::vector<Pair> choose_pairs(Work& work, std::size_t most) {
    std::vector<Pair> pairs;
    std::sort(work.candidates.begin(), work.candidates.end());
    work.candidates.erase(std::unique(work.candidates.begin(), work.candidates.end()),
                          work.candidates.end());
    for (const std::uint32_t key : work.candidates)
        if (const std::uint32_t count = work.counts.at(key).count; count >= work.threshold)
            pairs.push_back({static_cast<std::uint16_t>(key >> 16),
                             static_cast<std::uint16_t>(key & 0xFFFF), count});
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const Pair& a, const Pair& b) { return a.count > b.count; });
    work.candidates.clear();
    std::vector<bool> is_left(work.made.symbols.size());
    std::vector<bool> is_right(work.made.symbols.size());
    std::vector<Pair> chosen;
    for (const Pair& pair : pairs) {
        const bool competes = is_right[pair.left] || is_left[pair.right] ||
                              (pair.left == pair.right && is_left[pair.left]);
        if (competes || chosen.size() == most) {
            work.candidates.push_back(key_of(pair.left, pair.right));
            continue;
        }
        is_left[pair.left] = true;
        is_right[pair.right] = true;
        chosen.push_back(pair);
    }
    return chosen;
}

// Makes symbols of the pairs and puts them into the sequence.
static void replace_pairs(Work& work, const std::vector<Pair>& chosen) {
    std::vector<std::uint8_t> is_left(work.made.symbols.size());
    std::vector<std::uint8_t> is_right(work.made.symbols.size());
    for (const auto& [left, right, count] : chosen) {
        is_left[left] = is_right[right] = 1;
        work.counts.at(key_of(left, right)).count =
            PairCounts::CHOSEN | work.add_symbol(left, right);
    }
    const std::size_t size = work.made.sequence.size();
    std::uint16_t* const sequence = work.made.sequence.data();
    std::size_t write = 0;
    bool replaced_before = false; // the symbol before is a new one
    std::uint16_t before = 0;     // that symbol as it was, or the right one of its pair
    for (std::size_t read = 0; read < size;) {
        const std::uint16_t left = sequence[read];
        std::uint16_t symbol = left;
        std::uint16_t last = left;
        if (is_left[left] != 0 && read + 1 < size && is_right[sequence[read + 1]] != 0) {
            const std::uint16_t right = sequence[read + 1];
            if (work.fits(left, right)) {
                const std::uint32_t count = work.counts.at(key_of(left, right)).count;
                if ((count & PairCounts::CHOSEN) != 0) {
                    symbol = static_cast<std::uint16_t>(count & ~PairCounts::CHOSEN);
                    last = right;
                }
            }
        }
        const bool replaced = symbol != left;
        if (write > 0 && (replaced || replaced_before)) {
            work.count_down(before, left);
            work.count_up(sequence[write - 1], symbol);
        }
        read += replaced ? 2 : 1;
        sequence[write++] = symbol;
        replaced_before = replaced;
        if (!replaced) {
            // Most symbols neither begin a pair nor stand beside a new symbol.
            for (; read < size && is_left[sequence[read]] == 0; ++read)
                last = sequence[write++] = sequence[read];
        }
        before = last;
    }
    work.made.sequence.resize(write);
    // None of them is left.
    for (const Pair& pair : chosen)
        work.counts.at(key_of(pair.left, pair.right)).count = 0;
}

// Sets the threshold by the most frequent pair. False if no pair is frequent enough.
static bool lower_threshold(Work& work) {
    std::uint32_t greatest = 0;
    for (const PairCounts::Entry& entry : work.counts.all())
        greatest = std::max(greatest, entry.count);
    work.threshold =
        std::max(MIN_PAIR_COUNT, static_cast<std::uint32_t>(greatest * ROUND_FRACTION));
    work.candidates.clear();
    for (const PairCounts::Entry& entry : work.counts.all())
        if (entry.count >= work.threshold)
            work.candidates.push_back(entry.key);
    return greatest >= MIN_PAIR_COUNT;
}

Substitution substitute_pairs(std::vector<ValueRun> runs, const CompressionSettings& settings,
                              Progress progress) {
    Substitution made;
    Work work{made, {}, {}, UINT32_MAX, {}};
    const auto max_symbols = static_cast<std::size_t>(settings.max_symbols);
    substitute_runs(work, runs, max_symbols);
    runs = {};
    for (std::size_t i = 0; i + 1 < made.sequence.size(); ++i)
        work.count_up(made.sequence[i], made.sequence[i + 1]);
    while (made.symbols.size() < max_symbols) {
        progress.report(static_cast<double>(made.symbols.size()) /
                        static_cast<double>(max_symbols));
        const std::vector<Pair> chosen = choose_pairs(work, max_symbols - made.symbols.size());
        if (!chosen.empty())
            replace_pairs(work, chosen);
        else if (!lower_threshold(work))
            break;
    }
    return made;
}

} // namespace brindlemoth::tablegen
