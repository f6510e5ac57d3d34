// Compresses a sequence of values as table files store it: pairs of neighbours become symbols again
// and again (Re-Pair), the symbols get canonical Huffman codes, and whole codes fill blocks of
// fixed size. An index table finds the block of any value.
#pragma once

#include "system/progress.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace brindlemoth::tablegen {

constexpr int MAX_SYMBOLS = 4095;      // the number 0xFFF marks a leaf
constexpr int MAX_VALUE = 4095;        // a leaf has 12 bits
constexpr int MAX_SYMBOL_VALUES = 256; // values that one symbol may stand for
constexpr int MAX_CODE_LENGTH = 32;    // what the reader has in its register at any time
constexpr std::size_t MAX_BLOCK_VALUES = 65536;

struct CompressionSettings {
    // Where a range is given, the size that makes the stream smallest is taken.
    int min_block_size_log2 = 5;
    int max_block_size_log2 = 10;
    int index_bits = 0; // 0: chosen to have an entry for every few blocks
    int max_symbols = MAX_SYMBOLS;
    // Values per block are held down to this, for tests that want many blocks.
    std::size_t max_block_values = MAX_BLOCK_VALUES;
};

constexpr std::uint16_t LEAF = 0xFFF; // as a right part: the left part is a value

struct Symbol {
    std::uint16_t left;
    std::uint16_t right;
};

struct CompressedStream {
    bool constant = false;
    std::uint16_t constant_value = 0;
    int block_size_log2 = 0;
    int index_bits = 0;
    std::vector<Symbol> symbols;
    int min_code_length = 0;
    int max_code_length = 0;
    std::vector<std::uint16_t> first_symbol; // by code length, from the shortest upward
    struct IndexEntry {
        std::uint32_t block;
        std::uint16_t offset;
    };
    std::vector<IndexEntry> index_table;
    // Values of each block less 1; the last `extra_blocks` entries stand for no block.
    std::vector<std::uint16_t> block_lengths;
    int extra_blocks = 0;
    std::vector<std::uint8_t> blocks;
};

// A value, at most MAX_VALUE, that stands so many times in a row.
struct ValueRun {
    std::uint16_t value;
    std::uint16_t length;
};
// The length of the runs that append_values() divides longer ones into: whole symbols.
constexpr std::size_t MAX_RUN_LENGTH = 65535 / MAX_SYMBOL_VALUES * MAX_SYMBOL_VALUES;

// Adds values to the end of a sequence.
void append_values(std::vector<ValueRun>& runs, std::uint16_t value, std::size_t length);

// Compresses a sequence of at least one value. Throws std::runtime_error where index_bits asks for
// more than a header can say.
CompressedStream compress(std::vector<ValueRun> runs, const CompressionSettings& settings = {},
                          Progress progress = {});

} // namespace brindlemoth::tablegen
