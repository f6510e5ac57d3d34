// The records of a material signature: what the registry knows about its files, and the decoding
// state that the first probe of each file adds. The registry owns them, the mapper
// (tablebase/table_file.h) fills in the decoding state, and the index and the decoder read it.
// A pointer into a mapped view is valid as long as the view.
#pragma once

#include "platform/file_mapping.h"

#include <cstddef>
#include <cstdint>

namespace brindlemoth {

// The three files that a signature can have. A distance-to-mate file is never read.
enum TableKind : int { KIND_WDL, KIND_DTM, KIND_DTZ, KIND_COUNT };

// The largest number of men of a signature.
constexpr int MAX_TABLE_MEN = 7;
// A table with pawns has four sub-tables, called file positions, for the leading pawn on file a or
// h, b or g, c or f, d or e. A table without pawns has one.
constexpr int PAWN_FILE_POSITIONS = 4;

// The number of code bits that the decoder looks up at once.
constexpr int CODE_RUN_BITS = 8;
constexpr std::size_t CODE_RUNS = std::size_t{1} << CODE_RUN_BITS;

// The complete codes at the start of the next CODE_RUN_BITS bits. The run ends before the first
// code whose symbol is missing or broken. A code of a win-draw-loss table has about five bits.
struct CodeRun {
    std::uint16_t values;      // sum of the values of all these codes
    std::uint8_t bits;         // sum of their lengths, 0 if there is none
    std::uint8_t first_length; // length of the first code, 0 if it is longer than CODE_RUN_BITS
};

// The compressed values of one side of one file position. The record and the arrays code_base,
// code_runs and symbol_lengths share one heap block. A constant stream has no arrays.
struct CompressedStream {
    // Into the view:
    const std::uint8_t* index_table;    // 6-byte entries: block number and offset
    const std::uint8_t* block_lengths;  // 16-bit entries: number of values of a block minus 1
    const std::uint8_t* blocks;         // the code, aligned to 64 bytes
    const std::uint8_t* code_offsets;   // 16-bit entries: first symbol of each code length
    const std::uint8_t* symbol_records; // 3-byte entries
    const std::uint8_t* view_end;
    // Into the heap block:
    std::uint64_t* code_base;      // smallest code of each length, left-aligned in 64 bits
    CodeRun* code_runs;            // by the next CODE_RUN_BITS bits of code
    std::uint16_t* symbol_lengths; // number of values of each symbol minus 1, or BROKEN_SYMBOL
    // Entries that the file really contains. They keep the decoder inside the view.
    std::uint64_t index_count;
    std::uint64_t block_length_count;
    std::uint64_t block_count; // the file may end before the last block
    std::uint32_t symbol_count;
    std::uint8_t block_size_log2;
    std::uint8_t index_bits;      // an index entry covers 2^index_bits values; 0: constant stream
    std::uint8_t min_code_length; // code_offsets and code_base start at this length
    std::uint8_t constant_value[2];
};

// How the men of one stream are numbered. A group is a set of men that are numbered together. A
// place is a position in the stream's order of men.
struct SideEncoding {
    CompressedStream* decoder; // owned; null for a second side that the file does not store
    std::uint64_t multiplier[MAX_TABLE_MEN]; // weight of the group that starts at this place
    std::uint8_t piece_order[MAX_TABLE_MEN]; // piece code of the man at this place
    std::uint8_t group_size[MAX_TABLE_MEN];  // men of the group that starts here; otherwise 0
};

// Places of a table's encodings: WDL at file position + 4 * side, then DTZ by file position.
constexpr int DTZ_ENCODINGS = 2 * PAWN_FILE_POSITIONS;
constexpr int ENCODINGS = DTZ_ENCODINGS + PAWN_FILE_POSITIONS;
constexpr int VALUE_MAPS = 4;

// One material signature. Without pawns only file position 0 is used.
struct TableEntry {
    std::uint64_t key; // material key with the first-named side as white
    const std::uint8_t* view[KIND_COUNT];
    MappingHandle mapping[KIND_COUNT];
    std::uint32_t ready[KIND_COUNT]; // 1 once the file is mapped and its decoders are built
    std::uint8_t men;                // both kings included
    std::uint8_t symmetric;          // 1 if both sides have the same men
    std::uint8_t has_pawns;
    std::uint8_t has_dtm;
    std::uint8_t has_dtz;
    std::uint8_t two_king_scheme; // no pawns, and only the kings are the only men of their kind
    std::uint8_t lead_pawns;      // pawns of the leading colour, 0 without pawns
    std::uint8_t other_pawns;     // pawns of the other colour
    SideEncoding encodings[ENCODINGS];
    const std::uint8_t* dtz_map;                                    // start of the value maps
    std::uint32_t dtz_map_offsets[PAWN_FILE_POSITIONS][VALUE_MAPS]; // in map entries from dtz_map
    std::uint8_t dtz_flags[PAWN_FILE_POSITIONS];
};

// Bits of a DTZ stream's flags.
enum : std::uint8_t {
    DTZ_SIDE = 1,       // the side to move for which values are stored
    DTZ_MAPPED = 2,     // a stored value is an index into a value map
    DTZ_WIN_PLIES = 4,  // values of wins are plies instead of moves
    DTZ_LOSS_PLIES = 8, // values of losses are plies instead of moves
    DTZ_WIDE_MAPS = 16, // the value maps have 16-bit entries
};

inline int file_positions(const TableEntry& entry) {
    return entry.has_pawns != 0 ? PAWN_FILE_POSITIONS : 1;
}

// The encoding of side 0 and file position 0. Requires KIND_WDL or KIND_DTZ. The other file
// positions follow, and those of WDL side 1 start PAWN_FILE_POSITIONS further.
inline SideEncoding* syzygy_first_encoding(TableEntry& entry, TableKind kind) {
    return entry.encodings + (kind == KIND_DTZ ? DTZ_ENCODINGS : 0);
}
inline const SideEncoding* syzygy_first_encoding(const TableEntry& entry, TableKind kind) {
    return entry.encodings + (kind == KIND_DTZ ? DTZ_ENCODINGS : 0);
}

// Reads a little-endian number of a file, at any alignment.
inline std::uint32_t load_le16(const std::uint8_t* p) {
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8;
}
inline std::uint32_t load_le32(const std::uint8_t* p) {
    return load_le16(p) | load_le16(p + 2) << 16;
}
// Reads four bytes of code, which is big-endian.
inline std::uint32_t load_be32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
           static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}

// Sizes of an index-table entry, a block-length entry and a symbol record in bytes.
constexpr std::uint32_t INDEX_ENTRY_BYTES = 6;
constexpr std::uint32_t BLOCK_LENGTH_BYTES = 2;
constexpr std::uint32_t SYMBOL_BYTES = 3;

// In symbol_lengths: the symbol contains itself, a missing symbol or too many values. The number is
// larger than every position inside a block, so the decoder stops at such a symbol.
constexpr std::uint16_t BROKEN_SYMBOL = 0xFFFF;

// The two 12-bit numbers of a symbol record.
constexpr std::uint32_t LEAF_MARK = 0xFFF; // right part of a leaf, whose left part is the value
inline std::uint32_t symbol_left(const std::uint8_t* record) {
    return record[0] | static_cast<std::uint32_t>(record[1] & 0x0F) << 8;
}
inline std::uint32_t symbol_right(const std::uint8_t* record) {
    return static_cast<std::uint32_t>(record[1] >> 4) | static_cast<std::uint32_t>(record[2]) << 4;
}

} // namespace brindlemoth
