// Which signatures have table files, found by name and size alone, and the hash table that leads
// from a board's material to the entry. Rebuilt by syzygy_init() (tablebase/syzygy.h), read by
// the probes.
#pragma once

#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

// All signatures of 3 to 7 men: without pawns and with.
constexpr int PIECE_SIGNATURES = 650;
constexpr int PAWN_SIGNATURES = 861;
constexpr int TABLE_HASH_SIZE = 4096;

// A signature whose sides differ has two slots, one for each way round.
struct TableHashSlot {
    std::uint64_t key;    // 0 when empty
    TableEntry* entry;    // null when empty
    std::uint32_t failed; // a file of the entry could not be used: no further attempts
};

extern TableHashSlot table_hash[TABLE_HASH_SIZE];

extern PieceTableEntry* piece_entries; // allocated at the first need and then kept
extern PawnTableEntry* pawn_entries;   // likewise
extern std::int32_t piece_entry_count;
extern std::int32_t pawn_entry_count;
extern std::int32_t max_men_wdl; // men of the largest entry
extern std::int32_t max_men_dtm; // of the largest with a ".rtbm"

// The slot of a material key, or the empty slot where it would stand.
TableHashSlot& table_slot(std::uint64_t key);

// Opens a table file in the first directory that has it. The extension comes with its dot.
FileHandle syzygy_open_file(const char* name, const char* extension);

// Whether the file exists and has a length that a table can have. Reports one that has not.
bool syzygy_file_usable(const char* name, const char* extension);

// Counts the men of a signature by piece code: type for its first side, type + 8 for its second.
void count_signature_men(const char* name, int counts[16]);

// Enters one signature if its ".rtbw" is usable.
void syzygy_register(const char* name);

// Gives back all that the probes mapped and built for an entry.
void syzygy_release_entry(TableEntry& entry);

} // namespace brindlemoth
