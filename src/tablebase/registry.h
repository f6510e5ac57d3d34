// The registry of table files: one entry for each signature that has files, and a hash table that
// finds the entry by the material of a board. Discovery looks only at the names and sizes of files.
// syzygy_init() (tablebase/syzygy.h) rebuilds the registry, and the probes read it.
#pragma once

#include "tablebase/probe_board.h"
#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

// The number of signatures of 3 to 7 men without pawns, and with pawns.
constexpr int PIECE_SIGNATURES = 650;
constexpr int PAWN_SIGNATURES = 861;
constexpr int TABLE_HASH_SIZE = 4096;

// A signature whose sides differ has two slots, one for each colour of its first-named side.
struct TableHashSlot {
    std::uint64_t key;    // 0 when empty
    TableEntry* entry;    // null when empty
    std::uint32_t failed; // 1 after a file of the entry could not be mapped: no further attempts
};

extern TableHashSlot table_hash[TABLE_HASH_SIZE];

extern TableEntry* piece_entries; // without pawns; allocated by the first non-empty path
extern std::int32_t piece_entry_count;
extern std::int32_t pawn_entry_count;
extern std::int32_t max_men_dtm; // men of the largest entry with a ".rtbm"

// Returns the slot of a material key. Without such an entry the slot is an empty one.
TableHashSlot& table_slot(std::uint64_t key);

// Opens a table file in the first directory that has it, or returns INVALID_FILE. The extension
// includes its dot.
FileHandle syzygy_open_file(const char* name, const char* extension);

// Counts the men of a signature by piece code.
void count_signature_men(const char* name, int counts[PIECE_CODES]);

// Unmaps the files of an entry and frees its decoders.
void syzygy_release_entry(TableEntry& entry);

} // namespace brindlemoth
