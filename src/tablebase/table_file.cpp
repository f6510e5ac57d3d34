#include "tablebase/table_file.h"

#include "platform/file_mapping.h"
#include "tablebase/registry.h"
#include "tablebase/table_setup.h"

#include <cstdio>
#include <cstdlib>

namespace brindlemoth {

namespace {

constexpr std::uint32_t MAGIC_NUMBERS[KIND_COUNT] = {0x5D23E871, 0x88AC504B, 0xA50C66D7};
constexpr const char* EXTENSIONS[KIND_COUNT] = {".rtbw", ".rtbm", ".rtbz"};
constexpr std::uint64_t MIN_FILE_SIZE = 16;

// The file head: the magic number in four bytes, and the file flags.
constexpr int FILE_FLAGS = 4;
constexpr std::uint64_t FILE_HEAD_BYTES = 5;
constexpr std::uint8_t FILE_SPLIT = 1; // bit of the file flags: a WDL file stores two sides

SetupResult build_decoders(TableSetup& setup) {
    const std::uint8_t* const head = take(setup.file, FILE_HEAD_BYTES);
    if (head == nullptr || load_le32(head) != MAGIC_NUMBERS[setup.kind])
        return SetupResult::CORRUPTED;
    const bool split = setup.kind == KIND_WDL && (head[FILE_FLAGS] & FILE_SPLIT) != 0;
    return read_piece_headers(setup, split) ? read_streams(setup) : SetupResult::CORRUPTED;
}

// Maps the whole file and stores the view in the entry. Returns the size of the file, or 0 if there
// is no file or it is too short.
std::uint64_t map_view(TableEntry& entry, const char* name, TableKind kind) {
    const FileHandle file = syzygy_open_file(name, EXTENSIONS[kind]);
    if (file == INVALID_FILE)
        return 0;
    // The file may have been cut since it was found. An empty one cannot be mapped, but that must
    // not end the process.
    std::uint64_t size = 0;
    if (file_size(file, size) && size < MIN_FILE_SIZE) {
        std::fprintf(stderr, "Corrupted table.\n");
        close_file(file);
        return 0;
    }
    const MapResult result = map_file(file, entry.mapping[kind], entry.view[kind], size);
    if (result != MapResult::MAPPED) {
        std::fprintf(stderr, "%s() failed, error = %lu.\n",
                     result == MapResult::NO_MAPPING ? "CreateFileMapping" : "MapViewOfFile",
                     last_file_error());
        std::fprintf(stderr, "Could not map %s%s into memory.\n", name, EXTENSIONS[kind]);
        std::exit(1);
    }
    close_file(file);
    return size;
}

} // namespace

const char* table_extension(TableKind kind) {
    return EXTENSIONS[kind];
}

bool syzygy_map_table(TableEntry& entry, const char* name, TableKind kind) {
    const std::uint64_t size = map_view(entry, name, kind);
    if (size == 0)
        return false;
    TableSetup setup{entry, kind, {}, {entry.view[kind], size, 0}, {}, 0};
    count_signature_men(name, setup.counts);
    const SetupResult result = build_decoders(setup);
    if (result == SetupResult::DONE)
        return true;
    if (result == SetupResult::CORRUPTED)
        std::fputs("Corrupted table.\n", stderr);
    syzygy_unmap_table(entry, kind);
    return false;
}

void syzygy_unmap_table(TableEntry& entry, TableKind kind) {
    if (entry.view[kind] != nullptr) {
        if (!unmap_view(entry.view[kind], entry.mapping[kind]))
            std::fprintf(stderr, "unmap failed, error code %lu\n", last_file_error());
        if (!close_mapping(entry.mapping[kind]))
            std::fprintf(stderr, "CloseHandle failed, error code %lu\n", last_file_error());
        entry.view[kind] = nullptr;
        entry.mapping[kind] = 0;
    }
    SideEncoding* const first = syzygy_first_encoding(entry, kind);
    SideEncoding* const end = first + (kind == KIND_WDL ? MAX_STREAMS : PAWN_FILE_POSITIONS);
    for (SideEncoding* encoding = first; encoding != end; ++encoding) {
        operator delete(encoding->decoder);
        encoding->decoder = nullptr;
    }
}

} // namespace brindlemoth
