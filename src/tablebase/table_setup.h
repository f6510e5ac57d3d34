// Reading the headers of a mapped table file, in two steps: the piece headers and then the streams.
// Internal to the mapper (tablebase/table_file.h). A file is untrusted: every number is checked
// before anything relies on it.
#pragma once

#include "tablebase/probe_board.h"
#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

constexpr int MAX_STREAMS = 2 * PAWN_FILE_POSITIONS;
constexpr std::uint64_t HEADER_ALIGNMENT = 2;

// A mapped file that is read from its start. 0 <= offset <= size.
struct FileReader {
    const std::uint8_t* view;
    std::uint64_t size;
    std::uint64_t offset;
};

// Steps over `bytes` and returns their start, or returns null if the file has fewer.
inline const std::uint8_t* take(FileReader& file, std::uint64_t bytes) {
    if (bytes > file.size - file.offset)
        return nullptr;
    const std::uint8_t* const start = file.view + file.offset;
    file.offset += bytes;
    return start;
}

// Rises to the next multiple of `unit`. False if the file ends before it.
inline bool align(FileReader& file, std::uint64_t unit) {
    const std::uint64_t rest = file.offset % unit;
    return rest == 0 || take(file, unit - rest) != nullptr;
}

// A stream whose headers are being read.
struct StreamSetup {
    SideEncoding* encoding;  // receives the numbering and the decoder
    std::uint64_t positions; // number of index values
    std::uint8_t flags;
};

// A file whose headers are being read. The streams are in the order of the file: by file position,
// and then by side.
struct TableSetup {
    TableEntry& entry;
    TableKind kind;
    int counts[PIECE_CODES]; // men of the signature by piece code
    FileReader file;
    StreamSetup streams[MAX_STREAMS];
    int stream_count;
};

enum class SetupResult { DONE, CORRUPTED, OUT_OF_MEMORY };

// Reads the piece headers of all file positions. Fills the list of streams and their encodings.
// `split` means that the file stores two sides. False if a header is wrong.
bool read_piece_headers(TableSetup& setup, bool split);

// Reads everything that follows the piece headers, and builds the decoders.
SetupResult read_streams(TableSetup& setup);

} // namespace brindlemoth
