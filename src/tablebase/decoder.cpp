#include "tablebase/decoder.h"

#include <algorithm>

namespace brindlemoth {

namespace {

constexpr int INDEX_ENTRY_BYTES = 6;
constexpr int SYMBOL_BYTES = 3;

// A block, and which of its values is wanted.
struct BlockPlace {
    std::uint64_t block;
    std::int32_t value; // negative if there is no such place
};

// The walk from an index entry goes over a few blocks, eighty at the most in the tables of up to
// four men. A damaged file does not get more than this many, either way.
constexpr std::uint64_t MAX_WALK = 65536;

// The index entry describes the middle of the stretch of values that it serves, and the walk over
// the block lengths goes from there, either way.
BlockPlace find_block(const CompressedStream& stream, std::uint64_t index) {
    const std::uint64_t entry_number = index >> stream.index_bits;
    if (entry_number >= stream.index_count)
        return {0, -1};
    const std::uint8_t* const entry = stream.index_table + INDEX_ENTRY_BYTES * entry_number;
    const std::uint64_t stretch = std::uint64_t{1} << stream.index_bits;
    std::uint64_t block = load_le32(entry);
    std::int32_t value = static_cast<std::int32_t>(index & (stretch - 1)) -
                         static_cast<std::int32_t>(stretch / 2) +
                         static_cast<std::int32_t>(load_le16(entry + 4));

    const auto last_value = [&stream](std::uint64_t number) {
        return static_cast<std::int32_t>(load_le16(stream.block_lengths + 2 * number));
    };
    if (block > stream.block_length_count)
        return {0, -1};
    const std::uint64_t first = block - std::min(block, MAX_WALK);
    const std::uint64_t end = std::min(stream.block_length_count, block + MAX_WALK);
    while (value < 0) {
        if (block == first)
            return {0, -1};
        --block;
        value += last_value(block) + 1;
    }
    while (true) {
        if (block >= end)
            return {0, -1};
        const std::int32_t last = last_value(block);
        if (value <= last)
            break;
        value -= last + 1;
        ++block;
    }
    return {block, block < stream.block_count ? value : -1};
}

} // namespace

const std::uint8_t* syzygy_decode(const CompressedStream& stream, std::uint64_t index) {
    if (stream.index_bits == 0)
        return stream.constant_value;
    const BlockPlace place = find_block(stream, index);
    if (place.value < 0)
        return nullptr;

    // Read codes until the symbol that holds the value. The mapper has seen to it that the first
    // eight bytes of every block are in the file, and that no code stands for a missing symbol.
    std::int32_t value = place.value;
    const std::uint8_t* next = stream.blocks + (place.block << stream.block_size_log2);
    const std::uint8_t* const last_refill = stream.view_end - 4;
    std::uint64_t code = load_be64(next);
    next += 8;
    int bits_used = 0;
    std::uint32_t symbol;
    while (true) {
        int n = 0; // code length less the shortest
        while (code < stream.code_base[n])
            ++n;
        const int length = stream.min_code_length + n;
        const std::uint64_t place_in_length = (code - stream.code_base[n]) >> (64 - length);
        symbol =
            load_le16(stream.code_offsets + 2 * n) + static_cast<std::uint32_t>(place_in_length);
        const std::int32_t values = stream.symbol_lengths[symbol] + 1;
        if (value < values)
            break;
        value -= values;
        code <<= length;
        bits_used += length;
        if (bits_used >= 32) {
            if (next > last_refill)
                return nullptr;
            bits_used -= 32;
            code |= static_cast<std::uint64_t>(load_be32(next)) << bits_used;
            next += 4;
        }
    }
    // Take the symbol apart down to the one value. All parts exist, and the lengths fall.
    while (stream.symbol_lengths[symbol] != 0) {
        const std::uint8_t* const record = stream.symbol_records + SYMBOL_BYTES * symbol;
        const std::uint32_t left = symbol_left(record);
        const std::int32_t left_values = stream.symbol_lengths[left] + 1;
        if (value < left_values) {
            symbol = left;
        } else {
            value -= left_values;
            symbol = symbol_right(record);
        }
    }
    return stream.symbol_records + SYMBOL_BYTES * symbol;
}

} // namespace brindlemoth
