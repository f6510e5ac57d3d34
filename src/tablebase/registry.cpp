#include "tablebase/registry.h"

#include "platform/file_mapping.h"
#include "platform/standard_output.h"
#include "tablebase/position_index.h"
#include "tablebase/probe_board.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace brindlemoth {

TableHashSlot table_hash[TABLE_HASH_SIZE];
PieceTableEntry* piece_entries = nullptr;
PawnTableEntry* pawn_entries = nullptr;
std::int32_t piece_entry_count = 0;
std::int32_t pawn_entry_count = 0;
std::int32_t max_men_wdl = 0;
std::int32_t max_men_dtm = 0;
std::uint32_t syzygy_max_men = 0;
std::int32_t syzygy_probe_limit = 0;

namespace {

constexpr int HASH_SHIFT = 52; // a key's home slot is its top 12 bits

// A table file is made of 64-byte units and 16 bytes more.
constexpr std::uint64_t SIZE_UNIT = 64;
constexpr std::uint64_t SIZE_REST = 16;

bool index_tables_built = false;

// The option's value with a terminator in place of every ";", and the directories in it.
char* search_path_text = nullptr;
const char** search_dirs = nullptr;
std::int32_t search_dir_count = 0;

// Splits the path into search_dirs. Without memory for that there are no directories.
void set_search_path(const char* path) {
    const std::size_t length = std::strlen(path);
    search_path_text = new (std::nothrow) char[length + 1];
    // One directory takes at least one character and its separator.
    search_dirs = new (std::nothrow) const char*[length / 2 + 1];
    search_dir_count = 0;
    if (search_path_text == nullptr || search_dirs == nullptr)
        return;
    std::memcpy(search_path_text, path, length + 1);
    bool inside = false;
    for (char* c = search_path_text; *c != '\0'; ++c) {
        if (*c == ';') {
            *c = '\0';
            inside = false;
        } else if (!inside) {
            search_dirs[search_dir_count++] = c;
            inside = true;
        }
    }
}

void clear_search_path() {
    delete[] search_path_text;
    delete[] search_dirs;
    search_path_text = nullptr;
    search_dirs = nullptr;
    search_dir_count = 0;
}

void clear_registry() {
    for (std::int32_t i = 0; i < piece_entry_count; ++i)
        syzygy_release_entry(piece_entries[i]);
    for (std::int32_t i = 0; i < pawn_entry_count; ++i)
        syzygy_release_entry(pawn_entries[i]);
    piece_entry_count = 0;
    pawn_entry_count = 0;
    max_men_dtm = 0;
    max_men_wdl = 0;
    syzygy_max_men = 0;
    for (TableHashSlot& slot : table_hash)
        slot = {0, nullptr, 0};
}

void allocate_entries() {
    if (piece_entries == nullptr)
        piece_entries = new (std::nothrow) PieceTableEntry[PIECE_SIGNATURES]();
    if (pawn_entries == nullptr)
        pawn_entries = new (std::nothrow) PawnTableEntry[PAWN_SIGNATURES]();
    if (piece_entries == nullptr || pawn_entries == nullptr) {
        std::fputs("Out of memory.\n", stderr);
        std::exit(1);
    }
}

void enter_into_hash(std::uint64_t key, TableEntry& entry) {
    std::size_t slot = key >> HASH_SHIFT;
    while (table_hash[slot].entry != nullptr)
        slot = (slot + 1) % TABLE_HASH_SIZE;
    table_hash[slot] = {key, &entry, 0};
}

// One loop nest over the signatures of a shape. A letter begins at the strongest piece (FREE) or
// at the present piece of an earlier letter, whose number stands here.
constexpr int FREE = -1;
constexpr int SECOND_PAIR = -2; // like the second letter if the two before agree, else the third
constexpr int MAX_LETTERS = 5;  // seven men less the kings
struct SignatureNest {
    int letters;
    int first_side; // letters before the v
    int start[MAX_LETTERS];
};

// The order decides which messages about incomplete files come first.
constexpr SignatureNest signature_nests[] = {
    {1, 1, {FREE}},
    {2, 1, {FREE, 0}},
    {2, 2, {FREE, 0}},
    {3, 2, {FREE, 0, FREE}},
    {3, 3, {FREE, 0, 1}},
    {4, 2, {FREE, 0, 0, SECOND_PAIR}},
    {4, 3, {FREE, 0, 1, FREE}},
    {4, 4, {FREE, 0, 1, 2}},
    {5, 5, {FREE, 0, 1, 2, 3}},
    {5, 4, {FREE, 0, 1, 2, FREE}},
    {5, 3, {FREE, 0, 1, FREE, 3}},
};

int first_piece(const SignatureNest& nest, const int pieces[MAX_LETTERS], int letter) {
    const int start = nest.start[letter];
    if (start == FREE)
        return 0;
    if (start == SECOND_PAIR)
        return pieces[2] == pieces[0] ? pieces[1] : pieces[2];
    return pieces[start];
}

void print_signature(const SignatureNest& nest, const int pieces[MAX_LETTERS], char name[16]) {
    *name++ = 'K';
    for (int i = 0; i < nest.letters; ++i) {
        if (i == nest.first_side) {
            *name++ = 'v';
            *name++ = 'K';
        }
        *name++ = "QRBNP"[pieces[i]];
    }
    if (nest.first_side == nest.letters) {
        *name++ = 'v';
        *name++ = 'K';
    }
    *name = '\0';
}

void register_nest(const SignatureNest& nest, int pieces[MAX_LETTERS], int letter) {
    if (letter == nest.letters || letter == MAX_LETTERS) { // the second for the compiler's eyes
        char name[16];
        print_signature(nest, pieces, name);
        syzygy_register(name);
        return;
    }
    const int first = first_piece(nest, pieces, letter);
    for (pieces[letter] = first; pieces[letter] < 5; ++pieces[letter])
        register_nest(nest, pieces, letter + 1);
}

} // namespace

TableHashSlot& table_slot(std::uint64_t key) {
    std::size_t slot = key >> HASH_SHIFT;
    while (table_hash[slot].key != key && table_hash[slot].key != 0)
        slot = (slot + 1) % TABLE_HASH_SIZE;
    return table_hash[slot];
}

FileHandle syzygy_open_file(const char* name, const char* extension) {
    const std::size_t name_length = std::strlen(name);
    const std::size_t extension_length = std::strlen(extension);
    for (std::int32_t i = 0; i < search_dir_count; ++i) {
        const std::size_t dir_length = std::strlen(search_dirs[i]);
        char* const path =
            new (std::nothrow) char[dir_length + 1 + name_length + extension_length + 1];
        if (path == nullptr)
            return INVALID_FILE;
        char* end = path;
        std::memcpy(end, search_dirs[i], dir_length);
        end += dir_length;
        *end++ = path_separator;
        std::memcpy(end, name, name_length);
        end += name_length;
        std::memcpy(end, extension, extension_length + 1);
        const FileHandle file = open_file(path);
        delete[] path;
        if (file != INVALID_FILE)
            return file;
    }
    return INVALID_FILE;
}

bool syzygy_file_usable(const char* name, const char* extension) {
    const FileHandle file = syzygy_open_file(name, extension);
    if (file == INVALID_FILE)
        return false;
    std::uint64_t size = 0;
    const bool has_size = file_size(file, size);
    close_file(file);
    if (has_size && size % SIZE_UNIT == SIZE_REST)
        return true;
    const char* const bare_extension = extension + 1;
    std::fprintf(stderr, "Incomplete tablebase file %s.%s\n", name, bare_extension);
    print("info string Incomplete tablebase file %s.%s\n", name, bare_extension);
    return false;
}

void count_signature_men(const char* name, int counts[16]) {
    std::fill(counts, counts + 16, 0);
    int second_side = 0;
    for (; *name != '\0'; ++name)
        if (*name == 'v')
            second_side = 8;
        else if (const char* const code = std::strchr("PNBRQK", *name))
            ++counts[code - "PNBRQK" + 1 + second_side];
}

void syzygy_register(const char* name) {
    if (!syzygy_file_usable(name, table_extension(KIND_WDL)))
        return;
    int counts[16];
    count_signature_men(name, counts);
    const Key key = material_key_of_counts(counts, false);
    const Key mirrored_key = material_key_of_counts(counts, true);
    const int white_pawns = counts[PROBE_PAWN];
    const int black_pawns = counts[PROBE_PAWN + 8];

    TableEntry& entry = white_pawns + black_pawns > 0
                            ? static_cast<TableEntry&>(pawn_entries[pawn_entry_count++])
                            : piece_entries[piece_entry_count++];
    entry.has_pawns = white_pawns + black_pawns > 0 ? 1 : 0;
    entry.key = key;
    entry.symmetric = key == mirrored_key ? 1 : 0;
    entry.men = 0;
    for (const int count : counts)
        entry.men = static_cast<std::uint8_t>(entry.men + count);
    entry.has_dtm = syzygy_file_usable(name, table_extension(KIND_DTM)) ? 1 : 0;
    entry.has_dtz = syzygy_file_usable(name, table_extension(KIND_DTZ)) ? 1 : 0;
    max_men_wdl = std::max<std::int32_t>(max_men_wdl, entry.men);
    if (entry.has_dtm != 0)
        max_men_dtm = std::max<std::int32_t>(max_men_dtm, entry.men);
    std::fill(entry.ready, entry.ready + KIND_COUNT, 0);

    if (entry.has_pawns != 0) {
        // The side with fewer pawns leads, if it has any.
        const bool black_leads = black_pawns > 0 && (white_pawns == 0 || white_pawns > black_pawns);
        entry.lead_pawns = static_cast<std::uint8_t>(black_leads ? black_pawns : white_pawns);
        entry.other_pawns = static_cast<std::uint8_t>(black_leads ? white_pawns : black_pawns);
    } else {
        entry.two_king_scheme = std::count(counts, counts + 16, 1) == 2 ? 1 : 0;
        entry.other_pawns = 0;
    }

    enter_into_hash(key, entry);
    if (mirrored_key != key)
        enter_into_hash(mirrored_key, entry);
}

void syzygy_release_entry(TableEntry& entry) {
    for (const TableKind kind : {KIND_WDL, KIND_DTM, KIND_DTZ}) {
        if (entry.ready[kind] == 0)
            continue;
        syzygy_unmap_table(entry, kind);
        entry.ready[kind] = 0;
    }
}

bool syzygy_init(const char* path) {
    if (!index_tables_built) {
        syzygy_build_index_tables();
        index_tables_built = true;
    }
    clear_search_path();
    clear_registry();
    if (*path == '\0' || std::strcmp(path, "<empty>") == 0)
        return true;

    set_search_path(path);
    allocate_entries();
    for (const SignatureNest& nest : signature_nests) {
        int pieces[MAX_LETTERS] = {};
        register_nest(nest, pieces, 0);
    }
    syzygy_max_men = static_cast<std::uint32_t>(std::max(max_men_wdl, max_men_dtm));
    return true;
}

} // namespace brindlemoth
