#include "tablegen/made_up_file.h"

#include "file/table_reader.h"
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {

using tablegen::FileKind;

constexpr int WDL_VALUES = 5;
constexpr int DTZ_VALUES = 300;

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

static void look_at_stream(const tablegen::CompressedStream& stream, ReadBack& result) {
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

// How many of a stream's values the generator's own reader gets wrong.
static std::uint64_t misread_values(const tablegen::TableReader& reader, std::size_t stream,
                                    const std::vector<std::uint16_t>& expected) {
    if (reader.streams[stream].constant)
        return reader.streams[stream].constant_value != expected[0] ? 1 : 0;
    std::uint64_t index = 0;
    std::uint64_t wrong = 0;
    const bool whole = read_values(reader, reader.streams[stream], [&](auto values) {
        for (const std::uint16_t value : values)
            wrong += value != expected[index++] ? 1 : 0;
    });
    return wrong + (whole ? 0 : 1);
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
        EXPECT_EQ(
            tablegen::write_whole_file(path + ".rtbw", lay_out(make_wdl_companion(signature))), "");
    }
    syzygy_init(directory.path.c_str());
    tablegen::TableReader reader;
    EXPECT_EQ(open_table(path + extension_of(made_up.kind), signature, made_up.kind, reader), "");
    const bool symmetric = tablegen::is_symmetric(signature);

    for (std::size_t s = 0; s < made.values.size(); ++s) {
        const std::size_t sides = made.file.positions[0].streams.size();
        const tablegen::FilePosition& position = made.file.positions[s / sides];
        const tablegen::FileStream& stream = position.streams[s % sides];
        look_at_stream(stream.data, result);
        result.later_turns += stream.order.order != 0 ? 1 : 0;
        if (symmetric && s % sides == 1)
            continue; // nobody asks for the second side of equal sides
        result.judge_wrong += misread_values(reader, s, made.values[s]);
        const auto numbering = make_numbering(signature, static_cast<int>(s / sides), stream.order);
        const bool black = dtz ? !symmetric && (position.flags & 1) != 0 : s % sides == 1;
        // A constant stream is read here and there.
        const bool constant = stream.data.constant;
        const std::uint64_t step = constant ? 1 + numbering.positions / 1000 : made_up.every;
        tablegen::Walk walk = walk_from(numbering, 0);
        for (std::uint64_t index = 0; index < numbering.positions; index += step) {
            if (step > 1)
                walk = walk_from(numbering, index);
            ProbeBoard board = empty_board(!black);
            for (std::size_t man = 0; man < numbering.men; ++man) {
                const std::uint8_t piece = stream.order.piece[man];
                put_man(board, {piece < 8 ? 1 : 0, piece % 8}, walk.squares[man]);
            }
            constexpr int wdls[4] = {2, -2, 1, -1};
            const int wdl = wdls[index % 4];
            const int raw = made.values[s][constant ? 0 : index];
            const int expected = expected_value(position, dtz, wdl, raw);
            int success = PROBE_GOOD;
            const int read = syzygy_probe_table(index % 2 == 0 ? board : colours_exchanged(board),
                                                wdl, success, dtz ? KIND_DTZ : KIND_WDL);
            bool engine_right = success == PROBE_GOOD && read == expected;
            if (dtz && !symmetric) {
                // The other side to move is reported as such.
                board.white_to_move ^= 1;
                syzygy_probe_table(board, wdl, success, KIND_DTZ);
                engine_right = engine_right && success == PROBE_OTHER_SIDE;
            }
            ++result.values;
            result.engine_wrong += engine_right ? 0 : 1;
            if (!engine_right && result.first_wrong.empty()) {
                result.first_wrong = "stream " + std::to_string(s) + " index " +
                                     std::to_string(index) + " " + board_text(board) +
                                     ": expected " + std::to_string(expected) + ", read " +
                                     std::to_string(read) + ", success " + std::to_string(success);
            }
            if (step == 1)
                advance(walk);
        }
    }
    syzygy_init("");
    return result;
}

} // namespace brindlemoth
