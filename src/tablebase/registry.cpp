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
TableEntry* piece_entries = nullptr;
std::int32_t piece_entry_count = 0;
std::int32_t pawn_entry_count = 0;
std::int32_t max_men_dtm = 0;
std::uint32_t syzygy_max_men = 0;
std::int32_t syzygy_probe_limit = 0;

namespace {

TableEntry* pawn_entries = nullptr;
std::int32_t max_men_wdl = 0; // men of the largest entry

constexpr int HASH_SHIFT = 52; // the top 12 bits of a key select its first slot

// The size of a table file is a multiple of 64 bytes plus 16.
constexpr std::uint64_t SIZE_UNIT = 64;
constexpr std::uint64_t SIZE_REST = 16;

bool index_tables_built = false;

// A copy of the option's value with a terminator in place of every ";", and the directories in it.
char* search_path_text = nullptr;
const char** search_dirs = nullptr;
std::int32_t search_dir_count = 0;

// Splits the path into search_dirs. If there is no memory for that, search_dirs stays empty.
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
        piece_entries = new (std::nothrow) TableEntry[PIECE_SIGNATURES]();
    if (pawn_entries == nullptr)
        pawn_entries = new (std::nothrow) TableEntry[PAWN_SIGNATURES]();
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

constexpr char PIECE_LETTERS[] = "QRBNP"; // from strong to weak, by piece number
constexpr int PIECE_NUMBERS = 5;

// The signatures of one shape, such as K..vK., are produced by nested loops, one for each letter.
// Each loop runs over the piece numbers from a start value to the last. The start value is 0 (FREE)
// or the present piece of an earlier letter, whose number is given here.
constexpr int FREE = -1;
// The start of the last letter of K..vK..: the second letter if the first and third are equal,
// otherwise the third. It keeps KQRvKQQ out, which is KQQvKQR with the sides exchanged.
constexpr int SECOND_PAIR = -2;
constexpr int MAX_LETTERS = 5; // seven men without the kings
struct SignatureNest {
    int letters;
    int first_side; // number of letters before the v
    int start[MAX_LETTERS];
};

// The order of the shapes is the order of messages about incomplete files.
constexpr SignatureNest SIGNATURE_NESTS[] = {
    {1, 1, {FREE}},                    // KQvK
    {2, 1, {FREE, 0}},                 // KQvKR
    {2, 2, {FREE, 0}},                 // KQRvK
    {3, 2, {FREE, 0, FREE}},           // KRPvKR
    {3, 3, {FREE, 0, 1}},              // KQRBvK
    {4, 2, {FREE, 0, 0, SECOND_PAIR}}, // KRPvKRP
    {4, 3, {FREE, 0, 1, FREE}},        // KRBPvKQ
    {4, 4, {FREE, 0, 1, 2}},           // KQRBNvK
    {5, 5, {FREE, 0, 1, 2, 3}},        // KQRBNPvK
    {5, 4, {FREE, 0, 1, 2, FREE}},     // KRBNPvKQ
    {5, 3, {FREE, 0, 1, FREE, 3}},     // KRBPvKQR
};

int first_piece(const SignatureNest& nest, const int pieces[MAX_LETTERS], int letter) {
    const int start = nest.start[letter];
    if (start == FREE)
        return 0;
    if (start == SECOND_PAIR)
        return pieces[2] == pieces[0] ? pieces[1] : pieces[2];
    return pieces[start];
}

void print_signature(const SignatureNest& nest, const int pieces[MAX_LETTERS],
                     char name[SIGNATURE_ROOM]) {
    *name++ = 'K';
    for (int i = 0; i < nest.letters; ++i) {
        if (i == nest.first_side) {
            *name++ = 'v';
            *name++ = 'K';
        }
        *name++ = PIECE_LETTERS[pieces[i]];
    }
    if (nest.first_side == nest.letters) {
        *name++ = 'v';
        *name++ = 'K';
    }
    *name = '\0';
}

// Whether a table file exists and has a possible size. Reports a file that has another size.
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

// Enters a signature into the registry if it has a usable ".rtbw".
void syzygy_register(const char* name) {
    if (!syzygy_file_usable(name, table_extension(KIND_WDL)))
        return;
    int counts[PIECE_CODES];
    count_signature_men(name, counts);
    const Key key = material_key_of_counts(counts, false);
    const Key mirrored_key = material_key_of_counts(counts, true);
    const int white_pawns = counts[PROBE_PAWN];
    const int black_pawns = counts[PROBE_PAWN + SECOND_SIDE];

    const bool has_pawns = white_pawns + black_pawns > 0;
    TableEntry& entry =
        has_pawns ? pawn_entries[pawn_entry_count++] : piece_entries[piece_entry_count++];
    entry.has_pawns = has_pawns ? 1 : 0;
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

    // The colour with fewer pawns leads, if it has any, and otherwise the other colour.
    const bool black_leads = black_pawns > 0 && (white_pawns == 0 || white_pawns > black_pawns);
    entry.lead_pawns = static_cast<std::uint8_t>(black_leads ? black_pawns : white_pawns);
    entry.other_pawns = static_cast<std::uint8_t>(black_leads ? white_pawns : black_pawns);
    entry.two_king_scheme = !has_pawns && std::count(counts, counts + PIECE_CODES, 1) == 2 ? 1 : 0;

    enter_into_hash(key, entry);
    if (mirrored_key != key)
        enter_into_hash(mirrored_key, entry);
}

void register_nest(const SignatureNest& nest, int pieces[MAX_LETTERS], int letter) {
    if (letter == nest.letters ||
        letter == MAX_LETTERS) { // the second test prevents a compiler warning
        char name[SIGNATURE_ROOM];
        print_signature(nest, pieces, name);
        syzygy_register(name);
        return;
    }
    const int first = first_piece(nest, pieces, letter);
    for (pieces[letter] = first; pieces[letter] < PIECE_NUMBERS; ++pieces[letter])
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

void count_signature_men(const char* name, int counts[PIECE_CODES]) {
    std::fill(counts, counts + PIECE_CODES, 0);
    int second_side = 0;
    for (; *name != '\0'; ++name)
        if (*name == 'v')
            second_side = SECOND_SIDE;
        else if (const char* const letter = std::strchr(TYPE_LETTERS, *name))
            ++counts[letter - TYPE_LETTERS + second_side];
}

void syzygy_release_entry(TableEntry& entry) {
    for (const TableKind kind : {KIND_WDL, KIND_DTZ}) {
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
    for (const SignatureNest& nest : SIGNATURE_NESTS) {
        int pieces[MAX_LETTERS] = {};
        register_nest(nest, pieces, 0);
    }
    syzygy_max_men = static_cast<std::uint32_t>(std::max(max_men_wdl, max_men_dtm));
    return true;
}

} // namespace brindlemoth
