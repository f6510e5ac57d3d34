#include "compression/compress.h"

#include "compression/pair_substitution.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <queue>
#include <stdexcept>
#include <utility>

namespace brindlemoth::tablegen {

// An index entry serves at least this many blocks of average length, and less than twice as many. A
// reader walks over half of them at most.
constexpr std::uint64_t BLOCKS_PER_ENTRY = 8;
constexpr int MAX_INDEX_BITS = 20;

constexpr int MAX_EXTRA_BLOCKS = 255; // one byte of the header

// The code length of each symbol by Huffman's construction; 0 for symbols that do not occur.
// Lengths beyond the limit are avoided by flattening the counts until they fit.
static std::vector<int> code_lengths(std::vector<std::uint64_t> counts) {
    std::vector<int> lengths(counts.size(), 0);
    while (true) {
        using Node = std::pair<std::uint64_t, std::size_t>; // count, node number
        std::priority_queue<Node, std::vector<Node>, std::greater<>> open;
        std::vector<std::size_t> parent(2 * counts.size(), 0);
        for (std::size_t symbol = 0; symbol < counts.size(); ++symbol)
            if (counts[symbol] != 0)
                open.push({counts[symbol], symbol});
        if (open.size() == 1) {
            lengths[open.top().second] = 1;
            return lengths;
        }
        std::size_t node = counts.size();
        for (; open.size() > 1; ++node) {
            const Node a = open.top();
            open.pop();
            const Node b = open.top();
            open.pop();
            parent[a.second] = parent[b.second] = node;
            open.push({a.first + b.first, node});
        }
        // Nodes were made from the leaves upward: walk down from the last.
        std::vector<int> depth(node, 0);
        for (std::size_t i = node - 1; i-- > 0;) {
            const bool used = i >= counts.size() || counts[i] != 0;
            depth[i] = used ? depth[parent[i]] + 1 : 0;
        }
        std::copy_n(depth.begin(), counts.size(), lengths.begin());
        if (*std::max_element(lengths.begin(), lengths.end()) <= MAX_CODE_LENGTH)
            return lengths;
        for (std::uint64_t& count : counts)
            count = count == 0 ? 0 : count / 4 + 1;
    }
}

namespace {

// A sequence of symbols with the code of each.
struct Coded {
    std::vector<std::uint16_t> sequence;
    std::vector<std::uint32_t> code;   // by symbol
    std::vector<int> length;           // by symbol
    std::vector<std::uint32_t> values; // values that each symbol stands for
};

} // namespace

// Numbers the symbols anew, those with the longest codes first and those without a code last, and
// gives them codes that count upward in that order.
static Coded assign_codes(Substitution substitution, CompressedStream& stream) {
    const std::size_t count = substitution.symbols.size();
    std::vector<std::uint64_t> counts(count);
    for (const std::uint16_t symbol : substitution.sequence)
        ++counts[symbol];
    const std::vector<int> lengths = code_lengths(counts);
    std::vector<std::size_t> by_length(count);
    std::iota(by_length.begin(), by_length.end(), std::size_t{0});
    std::stable_sort(by_length.begin(), by_length.end(),
                     [&](std::size_t a, std::size_t b) { return lengths[a] > lengths[b]; });
    std::vector<std::uint16_t> renamed(count);
    for (std::size_t i = 0; i < count; ++i)
        renamed[by_length[i]] = static_cast<std::uint16_t>(i);

    Coded coded;
    coded.code.resize(count);
    coded.length.resize(count);
    coded.values.resize(count);
    stream.symbols.resize(count);
    for (std::size_t symbol = 0; symbol < count; ++symbol) {
        const Symbol& old = substitution.symbols[symbol];
        const bool leaf = old.right == LEAF;
        stream.symbols[renamed[symbol]] =
            leaf ? old : Symbol{renamed[old.left], renamed[old.right]};
        coded.length[renamed[symbol]] = lengths[symbol];
        coded.values[renamed[symbol]] =
            leaf ? 1 : coded.values[renamed[old.left]] + coded.values[renamed[old.right]];
    }
    for (std::uint16_t& symbol : substitution.sequence)
        symbol = renamed[symbol];
    coded.sequence = std::move(substitution.sequence);

    // The longest codes count from 0; each shorter length goes on at half of where that stopped.
    const auto used = static_cast<std::size_t>(
        std::count_if(lengths.begin(), lengths.end(), [](int length) { return length > 0; }));
    stream.max_code_length = coded.length[0];
    stream.min_code_length = coded.length[used - 1];
    const int distinct_lengths = stream.max_code_length - stream.min_code_length + 1;
    stream.first_symbol.resize(static_cast<std::size_t>(distinct_lengths));
    std::size_t symbol = 0;
    std::uint32_t next = 0;
    for (int length = stream.max_code_length; length >= stream.min_code_length; --length) {
        stream.first_symbol[static_cast<std::size_t>(length - stream.min_code_length)] =
            static_cast<std::uint16_t>(symbol);
        for (; symbol < used && coded.length[symbol] == length; ++symbol)
            coded.code[symbol] = next++;
        assert(used == 1 || next % 2 == 0);
        next /= 2;
    }
    return coded;
}

// Walks over the blocks that the sequence fills: visit(first, last, values) for each.
template <typename Visit>
static void for_blocks(const Coded& coded, int size_log2, std::size_t max_values,
                       const Visit& visit) {
    const std::size_t room = std::size_t{8} << size_log2;
    std::size_t first = 0;
    std::size_t bits = 0;
    std::size_t values = 0;
    for (std::size_t i = 0; i < coded.sequence.size(); ++i) {
        const std::uint16_t symbol = coded.sequence[i];
        const auto length = static_cast<std::size_t>(coded.length[symbol]);
        if (bits + length > room || (values + coded.values[symbol] > max_values && values > 0)) {
            visit(first, i, values);
            first = i;
            bits = values = 0;
        }
        bits += length;
        values += coded.values[symbol];
    }
    visit(first, coded.sequence.size(), values);
}

static int choose_block_size(const Coded& coded, const CompressionSettings& settings) {
    int best = settings.min_block_size_log2;
    std::size_t best_bytes = SIZE_MAX;
    for (int size = best; size <= settings.max_block_size_log2; ++size) {
        std::size_t blocks = 0;
        for_blocks(coded, size, settings.max_block_values,
                   [&](std::size_t, std::size_t, std::size_t) { ++blocks; });
        // Data, a block length, and this block's part of an index entry.
        const std::size_t bytes = (blocks << size) + 2 * blocks + 6 * blocks / BLOCKS_PER_ENTRY;
        if (bytes < best_bytes) {
            best = size;
            best_bytes = bytes;
        }
    }
    return best;
}

static void fill_blocks(const Coded& coded, const CompressionSettings& settings,
                        CompressedStream& stream) {
    const std::size_t size = std::size_t{1} << stream.block_size_log2;
    for_blocks(coded, stream.block_size_log2, settings.max_block_values,
               [&](std::size_t first, std::size_t last, std::size_t values) {
                   stream.block_lengths.push_back(static_cast<std::uint16_t>(values - 1));
                   // A byte goes out whenever there are eight bits.
                   const std::size_t end = stream.blocks.size() + size;
                   std::uint64_t bits = 0;
                   int waiting = 0;
                   for (std::size_t i = first; i < last; ++i) {
                       const std::uint16_t symbol = coded.sequence[i];
                       bits = bits << coded.length[symbol] | coded.code[symbol];
                       for (waiting += coded.length[symbol]; waiting >= 8; waiting -= 8)
                           stream.blocks.push_back(
                               static_cast<std::uint8_t>(bits >> (waiting - 8)));
                   }
                   if (waiting > 0)
                       stream.blocks.push_back(static_cast<std::uint8_t>(bits << (8 - waiting)));
                   stream.blocks.resize(end, 0);
               });
}

static void fill_index_table(std::uint64_t positions, int index_bits, CompressedStream& stream) {
    const std::uint64_t blocks = stream.block_lengths.size();
    if (index_bits == 0) {
        const std::uint64_t wanted = positions * BLOCKS_PER_ENTRY / blocks;
        index_bits = 1;
        while (index_bits < MAX_INDEX_BITS && (std::uint64_t{1} << index_bits) < wanted)
            ++index_bits;
    }
    stream.index_bits = index_bits;
    const std::uint64_t stretch = std::uint64_t{1} << index_bits;
    const std::uint64_t entries = (positions - 1 + stretch) >> index_bits;
    std::uint64_t block = 0;
    std::uint64_t start = 0; // index of the block's first value
    for (std::uint64_t entry = 0; entry < entries; ++entry) {
        // An entry describes the middle of its stretch. Where that lies beyond the last value,
        // blocks of full length are made up to reach it.
        const std::uint64_t middle = (entry << index_bits) + stretch / 2;
        while (true) {
            if (block == stream.block_lengths.size()) {
                stream.block_lengths.push_back(MAX_BLOCK_VALUES - 1);
                ++stream.extra_blocks;
            }
            const std::uint64_t length = stream.block_lengths[block] + std::uint64_t{1};
            if (middle < start + length)
                break;
            start += length;
            ++block;
        }
        stream.index_table.push_back(
            {static_cast<std::uint32_t>(block), static_cast<std::uint16_t>(middle - start)});
    }
    if (stream.extra_blocks > MAX_EXTRA_BLOCKS)
        throw std::runtime_error("a stream has more extra block lengths than its header can say");
}

void append_values(std::vector<ValueRun>& runs, std::uint16_t value, std::size_t length) {
    if (!runs.empty() && runs.back().value == value) {
        const std::size_t more = std::min(length, MAX_RUN_LENGTH - runs.back().length);
        runs.back().length = static_cast<std::uint16_t>(runs.back().length + more);
        length -= more;
    }
    for (; length > 0; length -= runs.back().length)
        runs.push_back({value, static_cast<std::uint16_t>(std::min(length, MAX_RUN_LENGTH))});
}

CompressedStream compress(std::vector<ValueRun> runs, const CompressionSettings& settings,
                          Progress progress) {
    CompressedStream stream;
    std::uint64_t positions = 0;
    bool constant = true;
    for (const ValueRun& run : runs) {
        positions += run.length;
        constant = constant && run.value == runs[0].value;
    }
    if (constant) {
        stream.constant = true;
        stream.constant_value = runs[0].value;
        return stream;
    }
    const Coded coded =
        assign_codes(substitute_pairs(std::move(runs), settings, std::move(progress)), stream);
    stream.block_size_log2 = choose_block_size(coded, settings);
    fill_blocks(coded, settings, stream);
    fill_index_table(positions, settings.index_bits, stream);
    return stream;
}

} // namespace brindlemoth::tablegen
