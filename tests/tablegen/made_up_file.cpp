#include "tablegen/made_up_file.h"

#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "verification/table_reader.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {

using tablegen::FileKind;

constexpr int WDL_VALUES = 5;
constexpr int DTZ_VALUES = 300;
// The generator's own reader is slow and looks at fewer places; it has whole tables to read in
// other tests.
constexpr std::uint64_t JUDGED_EVERY = 11;

static std::vector<std::uint16_t> make_values(Values kind, std::uint64_t count, int limit,
                                              std::mt19937_64& random) {
    const auto choices = static_cast<std::uint64_t>(limit);
    std::vector<std::uint16_t> values(count);
    std::uint16_t current = static_cast<std::uint16_t>(random() % choices);
    std::uint64_t left = 0;
    for (std::uint16_t& value : values) {
        switch (kind) {
        case Values::CONSTANT:
            return {};
        case Values::LONG_RUNS:
        case Values::SHORT_RUNS:
            if (left == 0) {
                left = 1 + random() % (kind == Values::LONG_RUNS ? 20000 : 12);
                current = static_cast<std::uint16_t>(random() % choices);
            }
            --left;
            break;
        case Values::NOISE:
            current = static_cast<std::uint16_t>(random() % choices);
            break;
        case Values::SKEWED:
            current = static_cast<std::uint16_t>(std::min<std::uint64_t>(
                static_cast<std::uint64_t>(std::countr_zero(random())), choices - 1));
            break;
        }
        value = current;
    }
    return values;
}

namespace {

// A file with the values that went into it.
struct Written {
    tablegen::TableFile file;
    std::vector<std::vector<std::uint16_t>> values; // by stream; one for a constant stream
};

} // namespace

static Written make_file(const MadeUpFile& made_up, std::mt19937_64& random) {
    Written made;
    made.file.kind = made_up.kind;
    made.file.signature = *tablegen::parse_signature(made_up.signature);
    const bool dtz = made_up.kind == FileKind::DTZ;
    const auto orders = tablegen::possible_orders(made.file.signature);
    const auto files = static_cast<std::size_t>(file_positions(made.file.signature));
    made.file.positions.resize(files);
    for (std::size_t t = 0; t < files; ++t) {
        const MadeUpStream& like = made_up.streams[std::min(t, made_up.streams.size() - 1)];
        tablegen::FilePosition& position = made.file.positions[t];
        position.flags = like.dtz_flags;
        if ((like.dtz_flags & tablegen::DTZ_MAPPED) != 0) {
            const bool wide = (like.dtz_flags & tablegen::DTZ_WIDE_MAPS) != 0;
            for (auto& map : position.maps) {
                map.resize(wide ? DTZ_VALUES : 255);
                for (std::uint16_t& entry : map)
                    entry = static_cast<std::uint16_t>(random() % (wide ? 65536 : 256));
            }
        }
        position.streams.resize(made_up.split && !dtz ? 2 : 1);
        for (tablegen::FileStream& stream : position.streams) {
            stream.order = orders[random() % orders.size()];
            const auto numbering =
                make_numbering(made.file.signature, static_cast<int>(t), stream.order);
            if (like.values == Values::CONSTANT) {
                // Not written out: it may stand for hundreds of millions of positions.
                stream.data.constant = true;
                stream.data.constant_value = dtz ? 0 : static_cast<std::uint16_t>(random() % 5);
                made.values.push_back({stream.data.constant_value});
                continue;
            }
            const bool narrow = (like.dtz_flags & tablegen::DTZ_MAPPED) != 0;
            const int limit = !dtz ? WDL_VALUES : narrow ? 255 : DTZ_VALUES;
            std::vector<std::uint16_t> values =
                make_values(like.values, numbering.positions, limit, random);
            made.values.push_back(values);
            stream.data = compress(std::move(values), like.settings);
        }
    }
    return made;
}

// Any file of the other kind that the format accepts, so that the registry takes the signature.
static tablegen::TableFile make_wdl_companion(const tablegen::Signature& signature) {
    tablegen::TableFile file;
    file.signature = signature;
    file.positions.resize(static_cast<std::size_t>(file_positions(signature)));
    for (tablegen::FilePosition& position : file.positions) {
        position.streams.resize(2);
        for (tablegen::FileStream& stream : position.streams) {
            stream.order = tablegen::possible_orders(signature).front();
            stream.data.constant = true;
        }
    }
    return file;
}

namespace {

struct SymbolShape {
    std::size_t values;
    int depth;
};

} // namespace

static SymbolShape shape_of(const tablegen::CompressedStream& stream, std::size_t symbol) {
    const tablegen::Symbol& pair = stream.symbols[symbol];
    if (pair.right == tablegen::LEAF)
        return {1, 0};
    const SymbolShape left = shape_of(stream, pair.left);
    const SymbolShape right = shape_of(stream, pair.right);
    return {left.values + right.values, 1 + std::max(left.depth, right.depth)};
}

// Decodes some blocks, to see where their codes lie.
static void look_at_codes(const tablegen::CompressedStream& stream, ReadBack& result) {
    std::vector<SymbolShape> shapes;
    for (std::size_t symbol = 0; symbol < stream.symbols.size(); ++symbol) {
        shapes.push_back(shape_of(stream, symbol));
        result.pair_depth = std::max(result.pair_depth, shapes.back().depth);
    }
    const auto& first = stream.first_symbol;
    std::vector<std::uint64_t> base(first.size(), 0); // the least code of each length
    for (std::size_t i = first.size() - 1; i-- > 0;)
        base[i] = (base[i + 1] + first[i] - first[i + 1]) / 2;
    const std::size_t size = std::size_t{1} << stream.block_size_log2;
    const std::size_t blocks = std::min<std::size_t>(stream.blocks.size() / size, 200);
    for (std::size_t block = 0; block < blocks; ++block) {
        std::size_t bit = 0;
        for (std::size_t values = 0; values <= stream.block_lengths[block];) {
            const std::size_t start = bit;
            std::uint64_t code = 0;
            std::size_t length = 0;
            const auto shortest = static_cast<std::size_t>(stream.min_code_length);
            while (length < shortest || code < base[length - shortest]) {
                const unsigned byte = stream.blocks[block * size + bit / 8];
                code = code << 1 | (byte >> (7 - bit % 8) & 1);
                ++bit;
                ++length;
            }
            values += shapes[first[length - shortest] + code - base[length - shortest]].values;
            result.crossings += start / 32 != (bit - 1) / 32 ? 1 : 0;
        }
    }
}

static void look_at_stream(const tablegen::CompressedStream& stream, ReadBack& result) {
    if (!stream.constant)
        look_at_codes(stream, result);
    result.blocks += stream.blocks.size() >> stream.block_size_log2;
    result.longest_code = std::max(result.longest_code, stream.max_code_length);
    const std::uint64_t half = stream.constant ? 0 : std::uint64_t{1} << (stream.index_bits - 1);
    for (const auto& entry : stream.index_table) {
        result.walks_back += entry.offset < half ? 1 : 0;
        const bool real = entry.block < stream.block_lengths.size();
        result.walks_on += real && entry.offset + half > stream.block_lengths[entry.block] ? 1 : 0;
    }
}

// What syzygy_probe_table() makes of a raw value.
static int expected_value(const tablegen::FilePosition& position, bool dtz, int wdl, int raw) {
    if (!dtz)
        return raw - 2;
    constexpr std::size_t map_of_wdl[5] = {1, 3, 0, 2, 0};
    constexpr int ply_flag[5] = {8, 0, 0, 0, 4};
    const bool mapped = (position.flags & tablegen::DTZ_MAPPED) != 0;
    const auto& map = position.maps[map_of_wdl[wdl + 2]];
    const int value = mapped ? map[static_cast<std::size_t>(raw)] : raw;
    return (position.flags & ply_flag[wdl + 2]) != 0 ? value : 2 * value;
}

// The slots of a layout filled with the men of a stream.
static tablegen::Placement placement_of(const tablegen::Layout& layout,
                                        const tablegen::Numbering& numbering,
                                        const tablegen::FileSquares& squares) {
    tablegen::Placement placement{};
    std::size_t used = 0;
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        const auto code = static_cast<std::uint8_t>(layout.kind[slot] + 8 * layout.side[slot]);
        std::size_t man = 0;
        while ((used >> man & 1) != 0 || numbering.order.piece[man] != code)
            ++man;
        used |= std::size_t{1} << man;
        placement[slot] = squares[man];
    }
    return placement;
}

ReadBack write_and_read(const MadeUpFile& made_up) {
    ReadBack result;
    std::mt19937_64 random(std::hash<std::string>{}(made_up.signature));
    const TemporaryDirectory directory;
    const Written made = make_file(made_up, random);
    const tablegen::Signature& signature = made.file.signature;
    const bool dtz = made_up.kind == FileKind::DTZ;
    const std::string path = directory.file(made_up.signature);
    EXPECT_EQ(tablegen::write_whole_file(path + extension_of(made_up.kind), lay_out(made.file)),
              "");
    if (dtz) {
        EXPECT_EQ(tablegen::write_whole_file(path + tablegen::WDL_EXTENSION,
                                             lay_out(make_wdl_companion(signature))),
                  "");
    }
    syzygy_init(directory.path.c_str());
    tablegen::TableReader reader;
    EXPECT_EQ(open_table(path + extension_of(made_up.kind), signature, dtz, reader), "");
    tablegen::Layout layout = tablegen::make_layout(signature);
    const bool symmetric = tablegen::is_symmetric(signature);

    for (std::size_t s = 0; s < made.values.size(); ++s) {
        const std::size_t sides = made.file.positions[0].streams.size();
        const tablegen::FilePosition& position = made.file.positions[s / sides];
        const tablegen::FileStream& stream = position.streams[s % sides];
        look_at_stream(stream.data, result);
        result.later_turns += stream.order.order != 0 ? 1 : 0;
        if (symmetric && s % sides == 1)
            continue; // nobody asks for the second side of equal sides
        const auto numbering = make_numbering(signature, static_cast<int>(s / sides), stream.order);
        const bool black = dtz ? !symmetric && (position.flags & 1) != 0 : s % sides == 1;
        // A constant stream is read here and there.
        const bool constant = stream.data.constant;
        const std::uint64_t step = constant ? 1 + numbering.positions / 1000 : made_up.every;
        for (std::uint64_t index = 0; index < numbering.positions; index += step) {
            const tablegen::FileSquares squares = squares_at(numbering, index);
            ProbeBoard board = empty_board(!black);
            for (std::size_t man = 0; man < numbering.men; ++man) {
                const std::uint8_t piece = stream.order.piece[man];
                put_man(board, {piece < 8 ? 1 : 0, piece % 8}, squares[man]);
            }
            constexpr int wdls[4] = {2, -2, 1, -1};
            const int wdl = wdls[index % 4];
            const int raw = made.values[s][constant ? 0 : index];
            const int expected = expected_value(position, dtz, wdl, raw);
            int success = PROBE_GOOD;
            const int read = syzygy_probe_table(index % 2 == 0 ? board : colours_exchanged(board),
                                                wdl, success, dtz ? KIND_DTZ : KIND_WDL);
            const bool engine_right = success == PROBE_GOOD && read == expected;

            ++result.values;
            bool judge_right = true;
            if (index % JUDGED_EVERY == 0) {
                const auto found =
                    find_position(reader, layout, placement_of(layout, numbering, squares),
                                  black ? tablegen::BLACK : tablegen::WHITE);
                judge_right = found && found->index == index &&
                              value_at(reader, *found->stream, found->index) == raw;
            }
            result.engine_wrong += engine_right ? 0 : 1;
            result.judge_wrong += judge_right ? 0 : 1;
            if (!(engine_right && judge_right) && result.first_wrong.empty()) {
                result.first_wrong = "stream " + std::to_string(s) + " index " +
                                     std::to_string(index) + " " + board_text(board) +
                                     ": expected " + std::to_string(expected) + ", read " +
                                     std::to_string(read) + ", success " + std::to_string(success);
            }
        }
    }
    syzygy_init("");
    return result;
}

} // namespace brindlemoth
