#include "compression/pair_substitution.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

namespace brindlemoth::tablegen {

// One round replaces every pair at least this fraction as frequent as the most frequent one:
// nearly as good as one pair at a time, in far fewer passes over the sequence.
constexpr double ROUND_FRACTION = 0.6;

// A pair becomes a symbol when it occurs at least so often.
constexpr std::uint32_t MIN_PAIR_COUNT = 4;

namespace {

struct Pair {
    std::uint16_t left;
    std::uint16_t right;
    std::uint32_t count;
};

// How often each two symbols stand side by side, and how many values each symbol stands for.
struct PairTable {
    std::size_t stride = 0;
    std::vector<std::uint32_t> entries;
    std::vector<std::uint16_t> values; // by symbol

    std::uint32_t& at(std::size_t left, std::size_t right) {
        return entries[left * stride + right];
    }
    // Makes room for that many symbols. All entries must be 0 and stay so.
    void reserve(std::size_t symbols) {
        if (symbols > stride) {
            stride = std::min<std::size_t>(std::max<std::size_t>(64, 2 * symbols), MAX_SYMBOLS + 1);
            entries = std::vector<std::uint32_t>(); // gives its memory back first
            entries.resize(stride * stride);
        }
    }
};

} // namespace

// Counts the pairs that stand side by side, and lists those that may become symbols.
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
        if (table.at(left, right)++ == 0)
            pairs.push_back({left, right, 0});
    }
    for (Pair& pair : pairs)
        pair.count = std::exchange(table.at(pair.left, pair.right), 0);
    std::erase_if(pairs, [&](const Pair& pair) {
        return table.values[pair.left] + table.values[pair.right] > MAX_SYMBOL_VALUES;
    });
    return pairs;
}

// Replaces the pairs whose entries name a symbol.
static void replace_pairs(std::vector<std::uint16_t>& sequence, PairTable& table) {
    std::size_t write = 0;
    std::size_t read = 0;
    while (read < sequence.size()) {
        const std::uint32_t symbol =
            read + 1 < sequence.size() ? table.at(sequence[read], sequence[read + 1]) : 0;
        sequence[write++] = symbol != 0 ? static_cast<std::uint16_t>(symbol) : sequence[read];
        read += symbol != 0 ? 2 : 1;
    }
    sequence.resize(write);
}

// The pairs that are to become symbols next: the most frequent ones that do not compete for a
// symbol between them.
static std::vector<Pair> choose_pairs(std::vector<Pair> pairs, std::size_t symbols,
                                      std::size_t most) {
    std::uint32_t greatest = 0;
    for (const Pair& pair : pairs)
        greatest = std::max(greatest, pair.count);
    const auto least =
        std::max(MIN_PAIR_COUNT, static_cast<std::uint32_t>(greatest * ROUND_FRACTION));
    std::erase_if(pairs, [&](const Pair& pair) { return pair.count < least; });
    std::sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
        return std::tuple(b.count, a.left, a.right) < std::tuple(a.count, b.left, b.right);
    });
    std::vector<bool> is_left(symbols);
    std::vector<bool> is_right(symbols);
    std::vector<Pair> chosen;
    for (const Pair& pair : pairs) {
        if (chosen.size() == most)
            break;
        if (is_right[pair.left] || is_left[pair.right] ||
            (pair.left == pair.right && is_left[pair.left]))
            continue;
        is_left[pair.left] = true;
        is_right[pair.right] = true;
        chosen.push_back(pair);
    }
    return chosen;
}

Substitution substitute_pairs(std::vector<std::uint16_t> values,
                              const CompressionSettings& settings, const Progress& progress) {
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
        if (progress)
            progress(static_cast<double>(made.symbols.size()) / static_cast<double>(max_symbols));
        table.reserve(made.symbols.size());
        const std::vector<Pair> chosen =
            choose_pairs(count_pairs(made.sequence, table), made.symbols.size(),
                         max_symbols - made.symbols.size());
        if (chosen.empty())
            break;
        for (const auto& [left, right, count] : chosen) {
            // No pair is the first symbol.
            table.at(left, right) = static_cast<std::uint32_t>(made.symbols.size());
            made.symbols.push_back({left, right});
            table.values.push_back(
                static_cast<std::uint16_t>(table.values[left] + table.values[right]));
        }
        replace_pairs(made.sequence, table);
        for (const Pair& pair : chosen)
            table.at(pair.left, pair.right) = 0;
    }
    return made;
}

} // namespace brindlemoth::tablegen
