#include "file/table_file.h"

#include "system/system.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace brindlemoth::tablegen {

namespace {

struct Bytes {
    std::vector<std::uint8_t> out;

    void number(std::uint64_t value, int width) {
        for (int i = 0; i < width; ++i)
            out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    void align(std::size_t multiple) { out.resize(round_up(out.size(), multiple), 0); }
};

} // namespace

static void put_piece_header(Bytes& bytes, const TableFile& file, const FilePosition& position) {
    const StreamOrder& first = position.streams.front().order;
    const StreamOrder& second = position.streams.back().order;
    auto nibbles = [&](int low, int high) {
        bytes.number(static_cast<std::uint64_t>(low | high << 4), 1);
    };
    nibbles(first.order, second.order);
    if (first.order2 != NO_TURN)
        nibbles(first.order2, second.order2);
    for (std::size_t man = 0; man < static_cast<std::size_t>(men_of(file.signature)); ++man)
        nibbles(first.piece[man], second.piece[man]);
}

static void put_stream_header(Bytes& bytes, const CompressedStream& stream, std::uint8_t flags) {
    if (stream.constant) {
        bytes.number(flags | STREAM_CONSTANT, 1);
        bytes.number(stream.constant_value, 1);
        return;
    }
    bytes.number(flags, 1);
    bytes.number(static_cast<std::uint64_t>(stream.block_size_log2), 1);
    bytes.number(static_cast<std::uint64_t>(stream.index_bits), 1);
    bytes.number(static_cast<std::uint64_t>(stream.extra_blocks), 1);
    bytes.number(stream.blocks.size() >> stream.block_size_log2, 4);
    bytes.number(static_cast<std::uint64_t>(stream.max_code_length), 1);
    bytes.number(static_cast<std::uint64_t>(stream.min_code_length), 1);
    for (const std::uint16_t first : stream.first_symbol)
        bytes.number(first, 2);
    bytes.number(stream.symbols.size(), 2);
    for (const Symbol& symbol : stream.symbols)
        bytes.number(static_cast<std::uint64_t>(symbol.left | symbol.right << 12), 3);
    bytes.align(2);
}

// The maps of one file position.
static void put_maps(Bytes& bytes, const FilePosition& position) {
    const int width = (position.flags & DTZ_WIDE_MAPS) != 0 ? 2 : 1;
    if (width == 2)
        bytes.align(2);
    for (const std::vector<std::uint16_t>& map : position.maps) {
        bytes.number(map.size(), width);
        for (const std::uint16_t value : map)
            bytes.number(value, width);
    }
}

std::uint64_t checksum(const std::uint8_t* bytes, std::size_t size) {
    // The 64-bit FNV-1a hash.
    std::uint64_t hash = 0xCBF29CE484222325;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 0x100000001B3;
    return hash;
}

std::vector<std::uint8_t> lay_out(const TableFile& file) {
    const bool wdl = file.kind == FileKind::WDL;
    const bool split = file.positions.front().streams.size() == 2;
    Bytes bytes;
    bytes.number(magic_of(file.kind), 4);
    // Bit 1 tells pawn tables apart; no reader needs it.
    const bool pawns = pawns_of(file.signature) != 0;
    bytes.number((split ? 1U : 0U) | (pawns ? 2U : 0U), 1);
    for (const FilePosition& position : file.positions)
        put_piece_header(bytes, file, position);
    bytes.align(2);
    for (const FilePosition& position : file.positions)
        for (const FileStream& stream : position.streams)
            put_stream_header(bytes, stream.data, wdl ? 0 : position.flags);
    if (!wdl) {
        for (const FilePosition& position : file.positions)
            if ((position.flags & DTZ_MAPPED) != 0)
                put_maps(bytes, position);
        bytes.align(2);
    }
    auto for_streams = [&](const auto& visit) {
        for (const FilePosition& position : file.positions)
            for (const FileStream& stream : position.streams)
                visit(stream.data);
    };
    for_streams([&](const CompressedStream& stream) {
        for (const CompressedStream::IndexEntry& entry : stream.index_table) {
            bytes.number(entry.block, 4);
            bytes.number(entry.offset, 2);
        }
    });
    for_streams([&](const CompressedStream& stream) {
        for (const std::uint16_t length : stream.block_lengths) {
            bytes.number(length, 2);
        }
    });
    for_streams([&](const CompressedStream& stream) {
        bytes.align(BLOCK_ALIGNMENT);
        bytes.out.insert(bytes.out.end(), stream.blocks.begin(), stream.blocks.end());
    });
    bytes.align(BLOCK_ALIGNMENT);
    const std::uint64_t sum = checksum(bytes.out.data(), bytes.out.size());
    bytes.out.insert(bytes.out.end(), TRAILER_TAG.begin(), TRAILER_TAG.end());
    bytes.number(sum, 8);
    return bytes.out;
}

std::string table_path(const std::string& directory, const Signature& signature, FileKind kind) {
    return (path_of(directory) / (name_of(signature) + extension_of(kind))).string();
}

std::string temporary_name(const std::string& path) {
    return path + "." + std::to_string(process_id()) + ".tmp";
}

void write_whole_file(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    const std::string temporary = temporary_name(path);
    const auto fail = [&](const std::string& name, int error) {
        std::remove(temporary.c_str());
        throw std::runtime_error("cannot write " + name + ": " + std::strerror(error));
    };
    std::FILE* const file = std::fopen(temporary.c_str(), "wb");
    if (file == nullptr)
        fail(temporary, errno);
    const bool written =
        std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && sync_to_disk(file);
    const int error = errno;
    if (std::fclose(file) != 0 || !written)
        fail(temporary, written ? errno : error);
    if (!replace_file(temporary.c_str(), path.c_str()))
        fail(path, errno);
}

} // namespace brindlemoth::tablegen
