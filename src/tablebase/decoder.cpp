#include "tablebase/decoder.h"

#include <algorithm>

namespace brindlemoth {

namespace {

// A block, and which of its values is wanted.
struct BlockPlace {
    std::uint64_t block;
    std::int64_t value; // negative if there is no such place
};

// The index entry describes the middle of the stretch of values that it serves, and the walk over
// the block lengths goes from there, either way: over eighty blocks at the most in the tables of up
// to four men.
BlockPlace find_block(const CompressedStream& stream, std::uint64_t index) {
    const std::uint64_t entry_number = index >> stream.index_bits;
    if (entry_number >= stream.index_count)
        return {0, -1};
    const std::uint8_t* const entry = stream.index_table + INDEX_ENTRY_BYTES * entry_number;
    const std::uint64_t stretch = std::uint64_t{1} << stream.index_bits;
    std::uint64_t block = load_le32(entry);
    std::int64_t value = static_cast<std::int64_t>(index & (stretch - 1)) -
                         static_cast<std::int64_t>(stretch / 2) + load_le16(entry + 4);

    const auto last_value = [&stream](std::uint64_t number) -> std::int64_t {
        return load_le16(stream.block_lengths + BLOCK_LENGTH_BYTES * number);
    };
    if (block > stream.block_length_count)
        return {0, -1};
    while (value < 0) {
        if (block == 0)
            return {0, -1};
        --block;
        value += last_value(block) + 1;
    }
    while (true) {
        if (block == stream.block_length_count)
            return {0, -1};
        const std::int64_t last = last_value(block);
        if (value <= last)
            break;
        value -= last + 1;
        ++block;
    }
    return {block, block < stream.block_count ? value : -1};
}

// The next four bytes of code, `left` bytes before the end of the file. Zeros stand for those that
// the file has not.
std::uint64_t next_word(const CompressedStream& stream, std::int64_t& left) {
    std::uint32_t word = 0;
    if (left >= 4) {
        word = load_be32(stream.view_end - left);
    } else {
        for (std::int64_t i = 0; i < 4; ++i)
            word = word << 8 | (i < left ? stream.view_end[i - left] : 0U);
    }
    left -= 4;
    return word;
}

} // namespace

const std::uint8_t* syzygy_decode(const CompressedStream& stream, std::uint64_t index) {
    if (stream.index_bits == 0)
        return stream.constant_value;
    const BlockPlace place = find_block(stream, index);
    std::int64_t left = stream.view_end - stream.blocks; // bytes up to the end of the file
    if (place.value < 0 || place.block > static_cast<std::uint64_t>(left) >> stream.block_size_log2)
        return nullptr;

    // Read codes until the symbol that holds the value.
    auto value = static_cast<std::int32_t>(place.value);
    left -= static_cast<std::int64_t>(place.block << stream.block_size_log2);
    std::uint64_t code = next_word(stream, left) << 32;
    code |= next_word(stream, left);
    int bits_used = 0;
    int length;
    std::uint32_t symbol;
    while (true) {
        int step;
        const CodeRun& run = stream.code_runs[code >> (64 - CODE_RUN_BITS)];
        if (value >= run.values && run.bits != 0) {
            value -= run.values;
            step = run.bits;
        } else {
            length = run.first_length != 0 ? run.first_length : code_length(stream, code);
            const std::uint64_t number = symbol_number(stream, code, length);
            if (number >= stream.symbol_count)
                return nullptr;
            symbol = static_cast<std::uint32_t>(number);
            const std::int32_t values = stream.symbol_lengths[symbol] + 1;
            if (value < values)
                break;
            value -= values;
            step = length;
        }
        code <<= step;
        bits_used += step;
        if (bits_used >= 32) {
            if (bits_used > 64)
                return nullptr;
            bits_used -= 32;
            code |= next_word(stream, left) << bits_used;
        }
    }
    // The code may have wanted more bits than the register had, or than the file has.
    if (bits_used + length > 64 + 8 * std::min<std::int64_t>(left, 0) ||
        stream.symbol_lengths[symbol] == BROKEN_SYMBOL)
        return nullptr;
    // Take the symbol apart down to the one value. All parts exist, and the lengths fall.
    while (stream.symbol_lengths[symbol] != 0) {
        const std::uint8_t* const record = stream.symbol_records + SYMBOL_BYTES * symbol;
        const std::uint32_t first = symbol_left(record);
        const std::int32_t first_values = stream.symbol_lengths[first] + 1;
        if (value < first_values) {
            symbol = first;
        } else {
            value -= first_values;
            symbol = symbol_right(record);
        }
    }
    return stream.symbol_records + SYMBOL_BYTES * symbol;
}

} // namespace brindlemoth
