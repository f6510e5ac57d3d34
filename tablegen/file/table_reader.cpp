#include "file/table_reader.h"

#include "system/system.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace brindlemoth::tablegen {

namespace {

// A place in the file. Reading past its end gives zeros and is remembered.
struct Cursor {
    const std::vector<std::uint8_t>& bytes;
    std::size_t at;
    bool failed = false;

    std::uint64_t number(std::size_t width) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i, ++at) {
            failed |= at >= bytes.size();
            value |= std::uint64_t{failed ? std::uint8_t{0} : bytes[at]} << 8 * i;
        }
        return value;
    }
    void align(std::size_t multiple) { at = round_up(at, multiple); }
};

} // namespace

// Step 1 of reading a stream: how it numbers its positions.
static bool read_order(Cursor& header, const Signature& signature, int file_position, int shift,
                       ReaderStream& stream) {
    auto nibble = [&] { return static_cast<int>(header.number(1) >> shift & 15); };
    StreamOrder order;
    order.order = nibble();
    if (signature.count[WHITE][PAWN] != 0 && signature.count[BLACK][PAWN] != 0)
        order.order2 = nibble();
    for (int man = 0; man < men_of(signature); ++man)
        order.piece[static_cast<std::size_t>(man)] = static_cast<std::uint8_t>(nibble());
    const std::vector<StreamOrder> possible = possible_orders(signature);
    if (std::find(possible.begin(), possible.end(), order) == possible.end())
        return false;
    stream.numbering = make_numbering(signature, file_position, order);
    return true;
}

// Lists the values that a symbol stands for, and those of its parts. Null where the parts do not
// exist, run in a circle, or come to too many values.
static const std::vector<std::uint16_t>* expand(ReaderStream& stream,
                                                const std::vector<std::uint64_t>& records,
                                                std::size_t symbol, std::size_t depth) {
    if (symbol >= records.size() || depth > MAX_SYMBOL_VALUES)
        return nullptr;
    std::vector<std::uint16_t>& values = stream.symbols[symbol];
    const std::size_t left = records[symbol] & 0xFFF;
    const std::size_t right = records[symbol] >> 12;
    if (values.empty() && right == 0xFFF) {
        values = {static_cast<std::uint16_t>(left)};
    } else if (values.empty()) {
        const auto* const first = expand(stream, records, left, depth + 1);
        const auto* const second =
            first != nullptr ? expand(stream, records, right, depth + 1) : nullptr;
        if (second == nullptr || first->size() + second->size() > MAX_SYMBOL_VALUES)
            return nullptr;
        values = *first;
        values.insert(values.end(), second->begin(), second->end());
    }
    return &values;
}

// Step 2: the stream's header.
static bool read_stream_header(Cursor& header, ReaderStream& stream) {
    stream.flags = static_cast<std::uint8_t>(header.number(1));
    stream.constant = (stream.flags & STREAM_CONSTANT) != 0;
    if (stream.constant) {
        stream.constant_value = static_cast<int>(header.number(1));
        return !header.failed;
    }
    stream.block_size_log2 = static_cast<int>(header.number(1));
    stream.index_bits = static_cast<int>(header.number(1));
    const std::size_t extra = header.number(1);
    stream.block_count = header.number(4);
    stream.block_length_count = stream.block_count + extra;
    const int longest = static_cast<int>(header.number(1));
    stream.min_code_length = static_cast<int>(header.number(1));
    if (header.failed || stream.block_size_log2 > 30 || stream.index_bits < 1 ||
        stream.index_bits > 30 || longest > MAX_CODE_LENGTH || stream.min_code_length < 1 ||
        stream.min_code_length > longest || stream.block_count == 0 ||
        stream.block_count > header.bytes.size() >> stream.block_size_log2)
        return false;
    const int distinct_lengths = longest - stream.min_code_length + 1;
    const auto lengths = static_cast<std::size_t>(distinct_lengths);
    for (std::size_t i = 0; i < lengths; ++i)
        stream.first_symbol.push_back(header.number(2));
    std::vector<std::uint64_t> records(header.number(2));
    for (std::uint64_t& record : records)
        record = header.number(3);
    header.at += records.size() % 2;
    stream.symbols.resize(records.size());
    for (std::size_t symbol = 0; symbol < records.size() && !header.failed; ++symbol)
        if (expand(stream, records, symbol, 0) == nullptr)
            return false;
    // The longest codes begin at 0, shorter ones where the longer ones of half the step end.
    stream.code_base.assign(lengths, 0);
    for (std::size_t i = lengths - 1; i-- > 0;) {
        stream.code_base[i] =
            (stream.code_base[i + 1] + stream.first_symbol[i] - stream.first_symbol[i + 1]) / 2;
    }
    for (std::size_t i = 0; i < lengths; ++i)
        stream.code_base[i] <<= 64 - stream.min_code_length - static_cast<int>(i);
    return !header.failed;
}

static bool read_maps(Cursor& header, ReaderStream& stream) {
    const std::size_t width = (stream.flags & DTZ_WIDE_MAPS) != 0 ? 2 : 1;
    if (width == 2)
        header.align(2);
    for (std::vector<int>& map : stream.maps) {
        const std::size_t count = header.number(width);
        for (std::size_t i = 0; i < count && !header.failed; ++i)
            map.push_back(static_cast<int>(header.number(width)));
    }
    return !header.failed;
}

// Step 3: where the sections lie. Returns where they end.
static std::size_t place_sections(std::size_t at, TableReader& reader) {
    for (ReaderStream& stream : reader.streams) {
        stream.index_table = at;
        if (!stream.constant)
            at += 6 * (((stream.numbering.positions - 1) >> stream.index_bits) + 1);
    }
    for (ReaderStream& stream : reader.streams) {
        stream.block_lengths = at;
        at += 2 * stream.block_length_count;
    }
    for (ReaderStream& stream : reader.streams) {
        stream.blocks = round_up(at, BLOCK_ALIGNMENT);
        at = stream.blocks + (stream.block_count << stream.block_size_log2);
    }
    return round_up(at, BLOCK_ALIGNMENT);
}

// Step 4: whether each entry of the index table leads to the middle of its stretch of values, and
// the blocks have a value for every index.
static bool index_is_right(const TableReader& reader, const ReaderStream& stream) {
    if (stream.constant)
        return true;
    std::vector<std::uint64_t> start = {0}; // first index of each block
    Cursor lengths{reader.bytes, stream.block_lengths};
    for (std::size_t block = 0; block < stream.block_length_count; ++block)
        start.push_back(start.back() + lengths.number(2) + 1);
    Cursor entries{reader.bytes, stream.index_table};
    const std::uint64_t stretch = std::uint64_t{1} << stream.index_bits;
    for (std::uint64_t first = 0; first < stream.numbering.positions; first += stretch) {
        const std::size_t block = entries.number(4);
        const std::uint64_t offset = entries.number(2);
        if (block >= start.size() || start[block] + offset != first + stretch / 2)
            return false;
    }
    return start[stream.block_count] >= stream.numbering.positions;
}

static std::string read_bytes(const std::string& path, std::vector<std::uint8_t>& bytes) {
    // A pipe would never end, and a device might not.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path_of(path), ignored))
        return "is not a regular file";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               std::fclose);
    if (file == nullptr)
        return "cannot be opened";
    bytes.clear();
    std::array<std::uint8_t, 1 << 16> buffer;
    std::size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), file.get())) != 0)
        bytes.insert(bytes.end(), buffer.begin(), buffer.begin() + static_cast<long>(got));
    return std::ferror(file.get()) != 0 ? "cannot be read" : "";
}

std::string open_table(const std::string& path, const Signature& signature, FileKind kind,
                       TableReader& reader) {
    reader = {};
    reader.signature = signature;
    reader.kind = kind;
    const bool dtz = kind == FileKind::DTZ;
    if (std::string failure = read_bytes(path, reader.bytes); !failure.empty())
        return failure;
    if (reader.bytes.size() % BLOCK_ALIGNMENT != TRAILER_BYTES)
        return "is incomplete";
    Cursor header{reader.bytes, 0};
    if (header.number(4) != magic_of(kind))
        return "has a wrong magic number";
    reader.sides = (header.number(1) & 1) != 0 && !dtz ? 2 : 1;
    if (!dtz && reader.sides == 1 && !is_symmetric(signature))
        return "has values for one side only";
    const auto files = static_cast<std::size_t>(file_positions(signature));
    reader.streams.resize(reader.sides * files);
    for (std::size_t file = 0; file < files; ++file) {
        const std::size_t start = header.at;
        for (std::size_t side = 0; side < reader.sides; ++side) {
            header.at = start;
            if (!read_order(header, signature, static_cast<int>(file), side == 0 ? 0 : 4,
                            reader.streams[file * reader.sides + side]))
                return "has a wrong order of men";
        }
    }
    header.align(2);
    for (ReaderStream& stream : reader.streams)
        if (!read_stream_header(header, stream))
            return "has a wrong stream header";
    for (ReaderStream& stream : reader.streams)
        if (dtz && (stream.flags & DTZ_MAPPED) != 0 && !read_maps(header, stream))
            return "has wrong value maps";
    header.align(2);
    if (place_sections(header.at, reader) + TRAILER_BYTES != reader.bytes.size())
        return "is not as long as its headers say";
    const std::size_t trailer = reader.bytes.size() - TRAILER_BYTES;
    reader.own = std::equal(TRAILER_TAG.begin(), TRAILER_TAG.end(),
                            reader.bytes.begin() + static_cast<long>(trailer));
    Cursor sum{reader.bytes, trailer + TRAILER_TAG.size()};
    if (reader.own && sum.number(8) != checksum(reader.bytes.data(), trailer))
        return "has a wrong checksum";
    for (const ReaderStream& stream : reader.streams)
        if (!index_is_right(reader, stream))
            return "has a wrong index table";
    return "";
}

// The values of a block, which must be `count` at least.
static bool decode_block(const std::uint8_t* block, const ReaderStream& stream, std::size_t count,
                         std::vector<std::uint16_t>& values) {
    values.clear();
    const std::size_t size = std::size_t{1} << stream.block_size_log2;
    const auto shortest = static_cast<std::size_t>(stream.min_code_length);
    std::uint64_t code = 0; // left-aligned
    std::size_t bits = 0;   // in the code that are of the block
    std::size_t next = 0;
    while (values.size() < count) {
        for (; bits <= 56 && next < size; bits += 8)
            code |= std::uint64_t{block[next++]} << (56 - bits);
        std::size_t place = 0;
        while (code < stream.code_base[place])
            ++place;
        const std::size_t length = shortest + place;
        const std::uint64_t number = (code - stream.code_base[place]) >> (64 - length);
        const std::uint64_t symbol = stream.first_symbol[place] + number;
        if (length > bits || symbol >= stream.symbols.size())
            return false;
        const std::vector<std::uint16_t>& more = stream.symbols[symbol];
        values.insert(values.end(), more.begin(), more.end());
        code <<= length;
        bits -= length;
    }
    return true;
}

bool read_values(const TableReader& reader, const ReaderStream& stream, const VisitValues& visit) {
    const auto constant =
        static_cast<std::uint16_t>(reader.kind == FileKind::DTZ ? 0 : stream.constant_value);
    std::vector<std::uint16_t> values(MAX_BLOCK_VALUES, constant);
    Cursor lengths{reader.bytes, stream.block_lengths};
    const std::uint8_t* block = reader.bytes.data() + stream.blocks;
    std::size_t blocks = stream.block_count;
    for (std::uint64_t left = stream.numbering.positions; left > 0;) {
        const std::size_t length = stream.constant ? values.size() : lengths.number(2) + 1;
        const auto here = static_cast<std::size_t>(std::min<std::uint64_t>(left, length));
        if (!stream.constant && (blocks-- == 0 || !decode_block(block, stream, here, values)))
            return false;
        block += std::size_t{1} << stream.block_size_log2;
        visit(std::span(values).first(here));
        left -= here;
    }
    return true;
}

} // namespace brindlemoth::tablegen
