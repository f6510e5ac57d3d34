// The records behind a material signature: what discovery knows of it, and the decoding state
// that the first probe of each of its files adds. Owned by the registry, filled by the mapper
// (tablebase/table_file.h), read by index and decoder.
// Pointers into a mapped view live exactly as long as the view.
#pragma once

#include "platform/file_mapping.h"

#include <cstddef>
#include <cstdint>

namespace brindlemoth {

// The three files that a signature can have. Only presence matters for distance to mate.
enum TableKind : int { KIND_WDL, KIND_DTM, KIND_DTZ, KIND_COUNT };

// Men of the largest signature.
constexpr int MAX_TABLE_MEN = 7;
// Sub-tables of a file with pawns, by the file of the leading pawn folded to a to d.
constexpr int PAWN_FILE_POSITIONS = 4;

// The decoder looks up this many bits of code at once.
constexpr int CODE_RUN_BITS = 8;
constexpr std::size_t CODE_RUNS = std::size_t{1} << CODE_RUN_BITS;

// The codes that lie whole within the next CODE_RUN_BITS bits, up to the first whose symbol has no
// meaning. An average code of a win-draw-loss table has five bits.
struct CodeRun {
    std::uint16_t values;      // sum of the values of all these codes
    std::uint8_t bits;         // sum of their lengths, 0 if there is none
    std::uint8_t first_length; // length of the first code, 0 if it is longer than CODE_RUN_BITS
};

// The compressed values of one side of one file position. One heap block holds the record, then
// code_base, code_runs and symbol_lengths; a constant stream has the record alone.
struct CompressedStream {
    const std::uint8_t* index_table;   // into the view: 6-byte entries, block number and offset
    const std::uint8_t* block_lengths; // into the view: 16-bit numbers, values of a block less 1
    const std::uint8_t* blocks;        // into the view: the code, 64-aligned
    const std::uint8_t*
        code_offsets; // into the view: first symbol, 16 bits, by code length less the shortest
    std::uint16_t* symbol_lengths;      // by symbol: values that it stands for, less 1
    const std::uint8_t* symbol_records; // into the view: 3 bytes each
    std::uint8_t block_size_log2;
    std::uint8_t index_bits; // an index entry serves 2 to this power values; 0: constant stream
    std::uint8_t min_code_length;
    std::uint8_t constant_value[2];
    // What the file holds of the sections, so that nothing leads the decoder out of it.
    std::uint64_t index_count;        // entries of index_table
    std::uint64_t block_length_count; // entries of block_lengths
    std::uint64_t block_count;        // blocks; the file may end before the last of them
    std::uint32_t symbol_count;
    const std::uint8_t* view_end;
    std::uint64_t* code_base; // by code length from the shortest: smallest code, left-aligned
    CodeRun* code_runs;       // by the next CODE_RUN_BITS bits of the code
};

// How the men of one stream become an index.
struct SideEncoding {
    CompressedStream* decoder; // owned; null for the missing second side of a file that has one
    std::uint64_t multiplier[MAX_TABLE_MEN]; // by place: weight of the group that begins there
    std::uint8_t piece_order[MAX_TABLE_MEN]; // type, plus 8 for the table's second colour
    std::uint8_t group_size[MAX_TABLE_MEN];  // by place: men of the group that begins there
};

// What all signatures have.
struct TableEntry {
    std::uint64_t key; // with the first-named side as white
    const std::uint8_t* view[KIND_COUNT];
    MappingHandle mapping[KIND_COUNT];
    std::uint32_t ready[KIND_COUNT]; // 1 once the file is mapped and its decoders are built
    std::uint8_t men;                // both kings included
    std::uint8_t symmetric;          // both sides have the same men
    std::uint8_t has_pawns;
    std::uint8_t has_dtm;
    std::uint8_t has_dtz;
    union {
        std::uint8_t lead_pawns;      // with pawns: those of the leading colour
        std::uint8_t two_king_scheme; // without: the kings are the only men without a twin
    };
    std::uint8_t other_pawns; // with pawns: those of the other colour
};

struct PieceTableEntry : TableEntry {
    SideEncoding encodings[5]; // 0 and 1 WDL by side; 2 and 3 unused; 4 DTZ
    const std::uint8_t* dtz_map;
    std::uint32_t dtz_map_offsets[4]; // by map, in entries of that map's width from dtz_map
    std::uint8_t dtz_flags;
};

struct PawnTableEntry : TableEntry {
    SideEncoding encodings[24]; // 0 to 7 WDL, file position + 4 * side; 8 to 19 unused; 20.. DTZ
    const std::uint8_t* dtz_map;
    std::uint32_t dtz_map_offsets[PAWN_FILE_POSITIONS][4]; // by file position, then by map
    std::uint8_t dtz_flags[PAWN_FILE_POSITIONS];
};

// Bits of a DTZ stream's flags.
enum : std::uint8_t {
    DTZ_SIDE = 1,       // the stored side to move
    DTZ_MAPPED = 2,     // values pass through a map
    DTZ_WIN_PLIES = 4,  // wins count plies, not moves
    DTZ_LOSS_PLIES = 8, // losses likewise
    DTZ_WIDE_MAPS = 16, // the maps have 16-bit entries
};

inline PieceTableEntry& piece_entry(TableEntry& entry) {
    return static_cast<PieceTableEntry&>(entry);
}
inline PawnTableEntry& pawn_entry(TableEntry& entry) {
    return static_cast<PawnTableEntry&>(entry);
}

// What a DTZ file says of one file position; 0 is the only one without pawns.
inline std::uint8_t& dtz_flags(TableEntry& entry, int file_position) {
    return entry.has_pawns != 0 ? pawn_entry(entry).dtz_flags[file_position]
                                : piece_entry(entry).dtz_flags;
}
inline std::uint32_t* dtz_map_offsets(TableEntry& entry, int file_position) {
    return entry.has_pawns != 0 ? pawn_entry(entry).dtz_map_offsets[file_position]
                                : piece_entry(entry).dtz_map_offsets;
}
inline const std::uint8_t*& dtz_map(TableEntry& entry) {
    return entry.has_pawns != 0 ? pawn_entry(entry).dtz_map : piece_entry(entry).dtz_map;
}

// File positions of a table: 1 without pawns, 4 with.
inline int file_positions(const TableEntry& entry) {
    return entry.has_pawns != 0 ? PAWN_FILE_POSITIONS : 1;
}

// The first encoding of the kind. The second side of a WDL table stands file_positions() behind.
SideEncoding* syzygy_first_encoding(TableEntry& entry, TableKind kind);

// Numbers of the files, which are little-endian, at any alignment.
inline std::uint32_t load_le16(const std::uint8_t* p) {
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8;
}
inline std::uint32_t load_le32(const std::uint8_t* p) {
    return load_le16(p) | load_le16(p + 2) << 16;
}
// Numbers of the code stream, which are big-endian.
inline std::uint32_t load_be32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
           static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}
inline std::uint64_t load_be64(const std::uint8_t* p) {
    return static_cast<std::uint64_t>(load_be32(p)) << 32 | load_be32(p + 4);
}

// Bytes of an entry of the sections, and of a symbol record.
constexpr std::uint32_t INDEX_ENTRY_BYTES = 6;
constexpr std::uint32_t BLOCK_LENGTH_BYTES = 2;
constexpr std::uint32_t SYMBOL_BYTES = 3;

// In symbol_lengths: a symbol without a meaning. No value of a block stands beyond it.
constexpr std::uint16_t BROKEN_SYMBOL = 0xFFFF;

// The two 12-bit numbers of a symbol record.
constexpr std::uint32_t LEAF_MARK = 0xFFF; // as the right part: the left part is a value
inline std::uint32_t symbol_left(const std::uint8_t* record) {
    return record[0] | static_cast<std::uint32_t>(record[1] & 0x0F) << 8;
}
inline std::uint32_t symbol_right(const std::uint8_t* record) {
    return static_cast<std::uint32_t>(record[1] >> 4) | static_cast<std::uint32_t>(record[2]) << 4;
}

} // namespace brindlemoth
