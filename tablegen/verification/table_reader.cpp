#include "verification/table_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
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
    void align(std::size_t multiple) { at = (at + multiple - 1) / multiple * multiple; }
};

struct PawnCounts {
    std::size_t leading;
    std::size_t other;
};

} // namespace

static PawnCounts pawn_counts(const Signature& signature) {
    std::size_t leading = signature.count[WHITE][PAWN];
    std::size_t other = signature.count[BLACK][PAWN];
    if (other > 0 && (leading == 0 || other < leading))
        std::swap(leading, other);
    return {leading, other};
}

// Number of a pawn's square: 47 for a2 down to 0 for e7.
static std::uint64_t pawn_order(std::size_t square) {
    const std::size_t file = square % 8;
    const std::size_t rank = square / 8;
    return file < 4 ? 47 - 12 * file - 2 * (rank - 1) : 46 - 12 * (7 - file) - 2 * (rank - 1);
}

// Placements of that many leading pawns whose first one stands on the file below the rank.
static std::uint64_t pawn_placements_below(std::size_t pawns, std::size_t file, std::size_t rank) {
    std::uint64_t sum = 0;
    for (std::size_t below = 1; below < rank; ++below)
        sum += binomial(pawn_order(8 * below + file), pawns - 1);
    return sum;
}

// Step 1 of reading a stream: the order of its men and the weight of each group.
static bool read_order(Cursor& header, const TableReader& reader, std::size_t file_position,
                       int shift, ReaderStream& stream) {
    const auto men = static_cast<std::size_t>(men_of(reader.signature));
    const PawnCounts pawns = pawn_counts(reader.signature);
    auto nibble = [&] { return static_cast<int>(header.number(1) >> shift & 15); };
    const int order = nibble();
    const int order2 = reader.pawns && pawns.other > 0 ? nibble() : 15;
    Signature named;
    for (std::size_t man = 0; man < men; ++man) {
        const int code = nibble();
        stream.piece.push_back(static_cast<std::uint8_t>(code));
        if (code % 8 == NO_KIND || code % 8 > KING)
            return false;
        ++named.count[static_cast<std::size_t>(code / 8)][static_cast<std::size_t>(code % 8)];
    }
    if (named != reader.signature)
        return false;
    std::vector<std::uint64_t> placements;
    std::size_t next = 0;
    auto add = [&](std::size_t size, std::uint64_t count) {
        stream.groups.push_back({next, size, 0});
        placements.push_back(count);
        next += size;
    };
    if (reader.pawns) {
        add(pawns.leading, pawn_placements_below(pawns.leading, file_position, 7));
        if (pawns.other > 0)
            add(pawns.other, binomial(48 - pawns.leading, pawns.other));
    } else {
        std::size_t singles = 0;
        for (const auto& side : reader.signature.count)
            singles += static_cast<std::size_t>(std::count(side.begin(), side.end(), 1));
        singles == 2 ? add(2, 462) : add(3, 31332);
    }
    const std::size_t fixed = stream.groups.size();
    while (next < men) {
        std::size_t size = 1;
        while (next + size < men && stream.piece[next + size] == stream.piece[next])
            ++size;
        add(size, binomial(64 - next, size));
    }
    std::size_t following = fixed;
    stream.positions = 1;
    const int turns = static_cast<int>(stream.groups.size());
    for (int turn = 0; turn < turns; ++turn) {
        std::size_t group = 0;
        if (turn != order)
            group = fixed == 2 && turn == order2 ? 1 : following++;
        if (group >= stream.groups.size())
            return false; // a turn was given to nobody
        stream.groups[group].multiplier = stream.positions;
        stream.positions *= placements[group];
    }
    return following == stream.groups.size() && order < turns && (fixed == 1 || order2 < turns);
}

// The number of values that a symbol stands for, 0 where its parts run in a circle or too deep.
static std::size_t count_values(std::vector<ReaderStream::Pair>& symbols, std::size_t symbol,
                                int depth) {
    if (symbol >= symbols.size() || depth > 256)
        return 0;
    ReaderStream::Pair& pair = symbols[symbol];
    if (pair.values == 0) {
        const std::size_t left = count_values(symbols, pair.left, depth + 1);
        const std::size_t right = left == 0 ? 0 : count_values(symbols, pair.right, depth + 1);
        pair.values = left == 0 || right == 0 ? 0 : left + right;
    }
    return pair.values > 256 ? 0 : pair.values;
}

// Step 2: the stream's header.
static bool read_stream_header(Cursor& header, ReaderStream& stream) {
    stream.flags = static_cast<std::uint8_t>(header.number(1));
    stream.constant = (stream.flags & 128) != 0;
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
        stream.index_bits > 30 || longest > 32 || stream.min_code_length < 1 ||
        stream.min_code_length > longest || stream.block_count == 0 ||
        stream.block_count > header.bytes.size() >> stream.block_size_log2)
        return false;
    const int distinct_lengths = longest - stream.min_code_length + 1;
    const auto lengths = static_cast<std::size_t>(distinct_lengths);
    for (std::size_t i = 0; i < lengths; ++i)
        stream.first_symbol.push_back(header.number(2));
    const std::size_t count = header.number(2);
    for (std::size_t i = 0; i < count && !header.failed; ++i) {
        const std::uint64_t record = header.number(3);
        const std::size_t right = record >> 12;
        stream.symbols.push_back({record & 0xFFF, right, right == 0xFFF ? std::size_t{1} : 0});
    }
    header.at += count % 2;
    for (std::size_t symbol = 0; symbol < stream.symbols.size(); ++symbol)
        if (count_values(stream.symbols, symbol, 0) == 0)
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
    const std::size_t width = (stream.flags & 16) != 0 ? 2 : 1;
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
        if (!stream.constant) {
            const std::uint64_t stretch = std::uint64_t{1} << stream.index_bits;
            at += 6 * ((stream.positions - 1 + stretch) >> stream.index_bits);
        }
    }
    for (ReaderStream& stream : reader.streams) {
        stream.block_lengths = at;
        at += 2 * stream.block_length_count;
    }
    for (ReaderStream& stream : reader.streams) {
        at = (at + 63) / 64 * 64;
        stream.blocks = at;
        at += stream.block_count << stream.block_size_log2;
    }
    return (at + 63) / 64 * 64;
}

static std::string read_bytes(const std::string& path, std::vector<std::uint8_t>& bytes) {
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

// The sixteen bytes at the end: a tag and the FNV-1a hash of what comes before, in our own files.
static bool checksum_is_wrong(const std::vector<std::uint8_t>& bytes) {
    const std::size_t size = bytes.size() - 16;
    if (std::memcmp(bytes.data() + size, "tablegen", 8) != 0)
        return false;
    std::uint64_t hash = 14695981039346656037U;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 1099511628211U;
    Cursor trailer{bytes, size + 8};
    return trailer.number(8) != hash;
}

std::string open_table(const std::string& path, const Signature& signature, bool dtz,
                       TableReader& reader) {
    reader = {};
    reader.signature = signature;
    reader.dtz = dtz;
    reader.pawns = pawns_of(signature) != 0;
    if (std::string failure = read_bytes(path, reader.bytes); !failure.empty())
        return failure;
    if (reader.bytes.size() % 64 != 16)
        return "is incomplete";
    Cursor header{reader.bytes, 0};
    if (header.number(4) != (dtz ? 0xA50C66D7 : 0x5D23E871))
        return "is no such table";
    reader.sides = (header.number(1) & 1) != 0 && !dtz ? 2 : 1;
    const std::size_t files = reader.pawns ? 4 : 1;
    reader.streams.resize(reader.sides * files);
    for (std::size_t file = 0; file < files; ++file) {
        const std::size_t start = header.at;
        for (std::size_t side = 0; side < reader.sides; ++side) {
            header.at = start;
            if (!read_order(header, reader, file, side == 0 ? 0 : 4,
                            reader.streams[file * reader.sides + side]))
                return "has a wrong order of men";
        }
    }
    header.align(2);
    for (ReaderStream& stream : reader.streams)
        if (!read_stream_header(header, stream))
            return "has a wrong stream header";
    for (ReaderStream& stream : reader.streams)
        if (dtz && (stream.flags & 2) != 0 && !read_maps(header, stream))
            return "has wrong value maps";
    header.align(2);
    if (place_sections(header.at, reader) + 16 != reader.bytes.size())
        return "is not as long as its headers say";
    return checksum_is_wrong(reader.bytes) ? "has a wrong checksum" : "";
}

std::optional<int> value_at(const TableReader& reader, const ReaderStream& stream,
                            std::uint64_t index) {
    if (stream.constant)
        return reader.dtz ? 0 : stream.constant_value;
    // Find the block: from the middle of the index entry's stretch, back or forth.
    Cursor entry{reader.bytes, stream.index_table + 6 * (index >> stream.index_bits)};
    auto block = static_cast<std::int64_t>(entry.number(4));
    auto left = static_cast<std::int64_t>(entry.number(2));
    left += static_cast<std::int64_t>(index & ((std::uint64_t{1} << stream.index_bits) - 1)) -
            (std::int64_t{1} << (stream.index_bits - 1));
    auto length_of = [&](std::int64_t number) {
        Cursor length{reader.bytes, stream.block_lengths + 2 * static_cast<std::size_t>(number)};
        return static_cast<std::int64_t>(length.number(2)) + 1;
    };
    while (left < 0) {
        if (--block < 0 || block >= static_cast<std::int64_t>(stream.block_length_count))
            return std::nullopt;
        left += length_of(block);
    }
    while (block < static_cast<std::int64_t>(stream.block_count) && left >= length_of(block))
        left -= length_of(block++);
    if (block >= static_cast<std::int64_t>(stream.block_count))
        return std::nullopt;
    // Read codes bit by bit until the one that holds the value.
    const std::size_t start =
        stream.blocks + (static_cast<std::size_t>(block) << stream.block_size_log2);
    const std::size_t end_bit = std::size_t{8} << stream.block_size_log2;
    std::size_t bit = 0;
    std::size_t symbol = 0;
    auto values_left = static_cast<std::size_t>(left);
    while (true) {
        std::uint64_t code = 0;
        std::size_t length = 0;
        bool found = false;
        while (!found) {
            if (bit == end_bit || length == 32)
                return std::nullopt;
            const std::uint64_t one = reader.bytes[start + bit / 8] >> (7 - bit % 8) & 1;
            ++bit;
            ++length;
            code |= one << (64 - length);
            const auto shortest = static_cast<std::size_t>(stream.min_code_length);
            if (length < shortest)
                continue;
            const std::size_t place = length - shortest;
            if (place >= stream.code_base.size())
                return std::nullopt;
            if (code >= stream.code_base[place]) {
                found = true;
                symbol = stream.first_symbol[place] +
                         ((code - stream.code_base[place]) >> (64 - length));
            }
        }
        if (symbol >= stream.symbols.size())
            return std::nullopt;
        if (values_left < stream.symbols[symbol].values)
            break;
        values_left -= stream.symbols[symbol].values;
    }
    while (stream.symbols[symbol].values > 1) {
        const ReaderStream::Pair& pair = stream.symbols[symbol];
        const std::size_t in_left = stream.symbols[pair.left].values;
        if (values_left < in_left) {
            symbol = pair.left;
        } else {
            values_left -= in_left;
            symbol = pair.right;
        }
    }
    return static_cast<int>(stream.symbols[symbol].left);
}

} // namespace brindlemoth::tablegen
