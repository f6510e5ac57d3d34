// A table file as a whole: its parts as a record, the bytes they make, and the way to disk.
//
// What the format leaves to the writer: the sixteen bytes at the end of a file hold a tag and a
// checksum of everything before them.
#pragma once

#include "compression/compress.h"
#include "numbering/numbering.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace brindlemoth::tablegen {

enum class FileKind : std::uint8_t { WDL, DTZ };

// Bits of a DTZ stream's flags byte.
enum DtzFlag : std::uint8_t {
    DTZ_BLACK_TO_MOVE = 1, // the second-named side is the one to move
    DTZ_MAPPED = 2,
    DTZ_WINS_IN_PLIES = 4, // values of wins count plies, not moves
    DTZ_LOSSES_IN_PLIES = 8,
    DTZ_WIDE_MAPS = 16, // the maps have 16-bit entries
};
constexpr std::uint8_t STREAM_CONSTANT = 128;

struct FileStream {
    StreamOrder order;
    CompressedStream data;
};

struct FilePosition {
    // One stream; two in a WDL file that stores both sides to move, the first-named side's first.
    std::vector<FileStream> streams;
    // DTZ only: the flags, and with DTZ_MAPPED the maps of wins, losses, cursed wins and
    // blessed losses.
    std::uint8_t flags = 0;
    std::array<std::vector<std::uint16_t>, 4> maps;
};

struct TableFile {
    FileKind kind = FileKind::WDL;
    Signature signature;
    std::vector<FilePosition> positions; // file_positions() of them, all with as many streams
};

constexpr std::array<char, 8> TRAILER_TAG = {'t', 'a', 'b', 'l', 'e', 'g', 'e', 'n'};
constexpr std::size_t TRAILER_BYTES = 16;
constexpr std::size_t BLOCK_ALIGNMENT = 64; // of each stream's blocks, and of the trailer

constexpr std::size_t round_up(std::size_t size, std::size_t multiple) {
    return (size + multiple - 1) / multiple * multiple;
}

constexpr const char* extension_of(FileKind kind) {
    return kind == FileKind::WDL ? ".rtbw" : ".rtbz";
}
constexpr std::uint32_t magic_of(FileKind kind) {
    return kind == FileKind::WDL ? 0x5D23E871 : 0xA50C66D7;
}
// The path of a table's file in the directory.
std::string table_path(const std::string& directory, const Signature& signature, FileKind kind);

// The bytes of the file.
std::vector<std::uint8_t> lay_out(const TableFile& file);

// The checksum that stands at the end of a file.
std::uint64_t checksum(const std::uint8_t* bytes, std::size_t size);

// The name under which a file is written before it gets its own: that of no other run at work in
// the same directory.
std::string temporary_name(const std::string& path);

// Writes the bytes under a temporary name beside the path and renames them when they are safely
// on disk. On failure it throws std::runtime_error, the path is as it was, and the temporary file
// is gone.
void write_whole_file(const std::string& path, const std::vector<std::uint8_t>& bytes);

} // namespace brindlemoth::tablegen
