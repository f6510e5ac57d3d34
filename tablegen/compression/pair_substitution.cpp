#include "compression/pair_substitution.h"

#include <algorithm>
#include <cassert>

namespace brindlemoth::tablegen {

// One round replaces every pair at least this fraction as frequent as the most frequent one:
// nearly as good as one pair at a time, in far fewer passes over the sequence.
constexpr double ROUND_FRACTION = 0.6;

// In the pair table: the entry is a new symbol, not a count.
constexpr std::uint32_t ACCEPTED = 0x80000000;

namespace {

struct Pair {
    std::uint32_t place; // in the pair table
    std::uint32_t count;
};

// How often each two symbols stand side by side, and how many values each symbol stands for.
struct PairTable {
    std::size_t stride = 0;
    std::vector<std::uint32_t> entries;
    std::vector<std::uint16_t> values; // by symbol

    std::uint32_t& at(std::uint16_t left, std::uint16_t right) {
        return entries[left * stride + right];
    }
    // Makes room for that many symbols. All entries must be 0 and stay so.
    void reserve(std::size_t symbols) {
        if (symbols > stride) {
            stride = std::min<std::size_t>(std::max<std::size_t>(64, 2 * symbols), MAX_SYMBOLS + 1);
            entries.assign(stride * stride, 0);
        }
    }
};

} // namespace

// Lists the pairs that may become symbols, the most frequent first.
static std::vector<Pair> count_pairs(const std::vector<std::uint16_t>& sequence, PairTable& table) {
    std::vector<Pair> pairs;
    bool counted_twin = false; // the pair before this one was the same symbol twice
    for (std::size_t i = 0; i + 1 < sequence.size(); ++i) {
        const std::uint16_t left = sequence[i];
        const std::uint16_t right = sequence[i + 1];
        // Of three like symbols in a row only two make a pair.
        if (left == right && counted_twin) {
            counted_twin = false;
            continue;
        }
        counted_twin = left == right;
        std::uint32_t& count = table.at(left, right);
        if (count++ == 0) {
            const auto place = static_cast<std::uint32_t>(left * table.stride + right);
            pairs.push_back({place, 0});
        }
    }
    for (Pair& pair : pairs) {
        pair.count = table.entries[pair.place];
        table.entries[pair.place] = 0;
    }
    std::erase_if(pairs, [&](const Pair& pair) {
        return table.values[pair.place / table.stride] + table.values[pair.place % table.stride] >
               MAX_SYMBOL_VALUES;
    });
    std::sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
        return a.count != b.count ? a.count > b.count : a.place < b.place;
    });
    return pairs;
}

static void replace_pairs(std::vector<std::uint16_t>& sequence, PairTable& table) {
    std::size_t write = 0;
    std::size_t read = 0;
    while (read < sequence.size()) {
        const std::uint32_t entry =
            read + 1 < sequence.size() ? table.at(sequence[read], sequence[read + 1]) : 0;
        if (entry != 0) {
            sequence[write++] = static_cast<std::uint16_t>(entry & ~ACCEPTED);
            read += 2;
        } else {
            sequence[write++] = sequence[read++];
        }
    }
    sequence.resize(write);
}

Substitution substitute_pairs(std::vector<std::uint16_t> values,
                              const CompressionSettings& settings) {
    Substitution made;
    made.sequence = std::move(values);
    PairTable table;

    // The values that occur become the first symbols.
    std::vector<std::uint16_t> leaf_of(MAX_VALUE + 1, LEAF);
    for (std::uint16_t& value : made.sequence) {
        assert(value <= MAX_VALUE);
        if (leaf_of[value] == LEAF) {
            leaf_of[value] = static_cast<std::uint16_t>(made.symbols.size());
            made.symbols.push_back({value, LEAF});
            table.values.push_back(1);
        }
        value = leaf_of[value];
    }

    const auto max_symbols = static_cast<std::size_t>(settings.max_symbols);
    while (made.symbols.size() < max_symbols) {
        table.reserve(made.symbols.size());
        const std::vector<Pair> pairs = count_pairs(made.sequence, table);
        if (pairs.empty() || pairs[0].count < settings.min_pair_count)
            break;
        const auto least = std::max<std::uint32_t>(
            settings.min_pair_count, static_cast<std::uint32_t>(pairs[0].count * ROUND_FRACTION));
        // Pairs of one round must not compete for a symbol between them.
        std::vector<bool> is_left(made.symbols.size());
        std::vector<bool> is_right(made.symbols.size());
        std::vector<std::uint32_t> accepted;
        for (const Pair& pair : pairs) {
            const auto left = static_cast<std::uint16_t>(pair.place / table.stride);
            const auto right = static_cast<std::uint16_t>(pair.place % table.stride);
            if (pair.count < least || made.symbols.size() == max_symbols)
                break;
            if (is_right[left] || is_left[right] || (left == right && is_left[left]))
                continue;
            is_left[left] = true;
            is_right[right] = true;
            table.entries[pair.place] = ACCEPTED | static_cast<std::uint32_t>(made.symbols.size());
            accepted.push_back(pair.place);
            made.symbols.push_back({left, right});
            table.values.push_back(
                static_cast<std::uint16_t>(table.values[left] + table.values[right]));
        }
        replace_pairs(made.sequence, table);
        for (const std::uint32_t place : accepted)
            table.entries[place] = 0;
    }
    return made;
}

} // namespace brindlemoth::tablegen
