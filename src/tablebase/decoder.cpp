#include "tablebase/decoder.h"

#include <algorithm>

namespace brindlemoth {

namespace {

// A block and the position of a value inside it.
struct BlockPlace {
    std::uint64_t block;
    std::int64_t value; // negative if the file does not contain the block
};

// Finds the block of an index. The index entry describes the middle of the range of values that it
// covers. The block is found by adding up block lengths from there, backward or forward. In tables
// of up to four men it is at most eighty blocks away.
BlockPlace find_block(const CompressedStream& stream, std::uint64_t index) {
    const std::uint64_t entry_number = index >> stream.index_bits;
    if (entry_number >= stream.index_count)
        return {0, -1};
    const std::uint8_t* const entry = stream.index_table + INDEX_ENTRY_BYTES * entry_number;
    const std::uint64_t range = std::uint64_t{1} << stream.index_bits;
    std::uint64_t block = load_le32(entry);
    std::int64_t value = static_cast<std::int64_t>(index & (range - 1)) -
                         static_cast<std::int64_t>(range / 2) + load_le16(entry + 4);

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

// Reads the next four bytes of code, which start `left` bytes before the end of the file. Bytes
// after the end are read as zeros.
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

// A symbol and the position of a value inside it.
struct SymbolPlace {
    std::uint32_t symbol;
    std::int32_t value; // negative if the code cannot be decoded
};

constexpr SymbolPlace NO_SYMBOL = {0, -1};

// Decodes a block up to the symbol that contains its value number `value`. `left` is the distance
// from the start of the block to the end of the file.
SymbolPlace find_symbol(const CompressedStream& stream, std::int32_t value, std::int64_t left) {
    std::uint64_t code = next_word(stream, left) << 32;
    code |= next_word(stream, left);
    int bits_used = 0;
    while (true) {
        const CodeRun& run = stream.code_runs[code >> (64 - CODE_RUN_BITS)];
        int length = run.bits;
        if (run.bits != 0 && value >= run.values) { // the value is behind all codes of the run
            value -= run.values;
        } else {
            length = run.first_length != 0 ? run.first_length : code_length(stream, code);
            const std::uint64_t symbol = symbol_number(stream, code, length);
            if (symbol >= stream.symbol_count)
                return NO_SYMBOL;
            const std::int32_t values = stream.symbol_lengths[symbol] + 1;
            if (value < values) {
                const std::int64_t bits_left = 64 + 8 * std::min<std::int64_t>(left, 0);
                if (bits_used + length > bits_left || values == BROKEN_SYMBOL + 1)
                    return NO_SYMBOL;
                return {static_cast<std::uint32_t>(symbol), value};
            }
            value -= values;
        }
        code <<= length;
        bits_used += length;
        if (bits_used > 64) // the code was longer than the rest of the register
            return NO_SYMBOL;
        if (bits_used >= 32) {
            bits_used -= 32;
            code |= next_word(stream, left) << bits_used;
        }
    }
}

// Expands a symbol down to the leaf of one value. Every symbol that is not broken contains only
// existing symbols with fewer values.
std::uint32_t expand_symbol(const CompressedStream& stream, SymbolPlace place) {
    while (stream.symbol_lengths[place.symbol] != 0) {
        const std::uint8_t* const record = stream.symbol_records + SYMBOL_BYTES * place.symbol;
        const std::uint32_t left = symbol_left(record);
        const std::int32_t left_values = stream.symbol_lengths[left] + 1;
        if (place.value < left_values) {
            place.symbol = left;
        } else {
            place.value -= left_values;
            place.symbol = symbol_right(record);
        }
    }
    return place.symbol;
}

} // namespace

const std::uint8_t* syzygy_decode(const CompressedStream& stream, std::uint64_t index) {
    if (stream.index_bits == 0)
        return stream.constant_value;
    const BlockPlace block = find_block(stream, index);
    const std::int64_t left = stream.view_end - stream.blocks;
    if (block.value < 0 || block.block > static_cast<std::uint64_t>(left) >> stream.block_size_log2)
        return nullptr;
    const SymbolPlace place =
        find_symbol(stream, static_cast<std::int32_t>(block.value),
                    left - static_cast<std::int64_t>(block.block << stream.block_size_log2));
    if (place.value < 0)
        return nullptr;
    return stream.symbol_records + SYMBOL_BYTES * expand_symbol(stream, place);
}

} // namespace brindlemoth
