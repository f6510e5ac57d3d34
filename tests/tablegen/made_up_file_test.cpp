// Files that hold what small tables of real endgames do not: values that no chess position has,
// drawn at random, lead the engine's reader and the generator's own through every corner of the
// format. Both must find each value at its place. Two programs take this file: one with files of up
// to four men.
#include "file/table_reader.h"
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/plain_table.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>

using namespace brindlemoth;

using tablegen::FileKind;

constexpr int WDL_VALUES = 5;
constexpr int DTZ_VALUES = 300;

// How the values of a stream follow each other. Those of SKEWED are each half as likely as the one
// before, which makes the longest codes.
enum Values { CONSTANT, LONG_RUNS, SHORT_RUNS, NOISE, SKEWED, VALUES_COUNT };

// Block size, index bits, symbols and values of a block. Besides the usual: one index entry for
// very many blocks; very many entries for one; no pairs, so that each value has a code of its own.
constexpr tablegen::CompressionSettings all_settings[] = {
    {}, {5, 5, 18, 4095, 200}, {10, 10, 3, 4095, 65536}, {8, 8, 12, 0, 65536}};

// A file with the values that went into it.
struct MadeUpFile {
    tablegen::TableFile file;
    std::vector<std::vector<std::uint16_t>> values; // by stream; one for a constant stream
};

static std::vector<std::uint16_t> make_values(Values kind, std::uint64_t count,
                                              std::uint64_t choices, std::mt19937_64& random) {
    std::vector<std::uint16_t> values(count);
    std::uint64_t current = 0;
    std::uint64_t left = 0;
    for (std::uint16_t& value : values) {
        if (kind == SKEWED) {
            current = std::min<std::uint64_t>(
                static_cast<std::uint64_t>(std::countr_zero(random())), choices - 1);
        } else if (left-- == 0) {
            current = random() % choices;
            left = kind == NOISE ? 0 : random() % (kind == LONG_RUNS ? 20000 : 12);
        }
        value = static_cast<std::uint16_t>(current);
    }
    return values;
}

static MadeUpFile make_up(const std::string& name, FileKind kind, Values values,
                          std::mt19937_64& random) {
    MadeUpFile made;
    const bool dtz = kind == FileKind::DTZ;
    made.file = constant_table(name, {0});
    made.file.kind = kind;
    const tablegen::Signature& signature = made.file.signature;
    const bool split = !dtz && (!is_symmetric(signature) || random() % 2 == 0);
    const auto orders = tablegen::possible_orders(signature);
    for (std::size_t t = 0; t < made.file.positions.size(); ++t) {
        tablegen::FilePosition& position = made.file.positions[t];
        position.flags = static_cast<std::uint8_t>(dtz ? random() % 32 : 0);
        const bool mapped = (position.flags & tablegen::DTZ_MAPPED) != 0;
        const bool wide = (position.flags & tablegen::DTZ_WIDE_MAPS) != 0;
        for (auto& map : position.maps) {
            map.resize(!mapped ? 0 : wide ? DTZ_VALUES : 254 + random() % 2);
            for (std::uint16_t& entry : map)
                entry = static_cast<std::uint16_t>(random() % (wide ? 65536 : 256));
        }
        position.streams.resize(split ? 2 : 1);
        for (tablegen::FileStream& stream : position.streams) {
            stream.order = orders[random() % orders.size()];
            const auto numbering = make_numbering(signature, static_cast<int>(t), stream.order);
            // Of a big file with pawns file d, which has the fewest positions, has to do.
            const bool constant =
                values == CONSTANT || numbering.positions > 10'000'000 ||
                (numbering.positions > 100'000 && t < made.file.positions.size() - 1);
            const int choices = !dtz ? WDL_VALUES : mapped ? 254 : DTZ_VALUES;
            made.values.push_back(constant
                                      ? make_values(NOISE, 1, dtz ? 1 : WDL_VALUES, random)
                                      : make_values(values, numbering.positions,
                                                    static_cast<std::uint64_t>(choices), random));
            std::vector<tablegen::ValueRun> runs;
            for (const std::uint16_t value : made.values.back())
                append_values(runs, value, 1);
            stream.data = compress(std::move(runs), all_settings[random() % 4]);
        }
    }
    return made;
}

// What syzygy_probe_table() makes of a raw value.
static int expected_value(const tablegen::FilePosition& position, bool dtz, int wdl, int raw) {
    if (!dtz)
        return raw - 2;
    constexpr std::size_t map_of_wdl[5] = {1, 3, 0, 2, 0};
    constexpr int ply_flag[5] = {8, 0, 0, 0, 4};
    const auto& map = position.maps[map_of_wdl[wdl + 2]];
    const int value = map.empty() ? raw : map[static_cast<std::size_t>(raw)];
    return (position.flags & ply_flag[wdl + 2]) != 0 ? value : 2 * value;
}

// The generator's own reader finds these values.
static bool generator_reads(const tablegen::TableReader& reader, std::size_t stream,
                            const std::vector<std::uint16_t>& expected) {
    std::uint64_t index = 0;
    std::uint64_t wrong = 0;
    const bool whole = read_values(reader, reader.streams[stream], [&](auto values) {
        for (const std::uint16_t value : values)
            wrong += value != expected[expected.size() == 1 ? 0 : index++] ? 1 : 0;
    });
    return whole && wrong == 0;
}

// The engine finds these values, or one in so many of them.
static void expect_engine_reads(const MadeUpFile& made, std::size_t s, unsigned one_in) {
    const bool dtz = made.file.kind == FileKind::DTZ;
    const bool symmetric = tablegen::is_symmetric(made.file.signature);
    const std::size_t sides = made.file.positions[0].streams.size();
    if (symmetric && s % sides == 1)
        return; // nobody asks for the second side of equal sides
    const tablegen::FilePosition& position = made.file.positions[s / sides];
    const bool black = dtz ? !symmetric && (position.flags & 1) != 0 : s % sides == 1;
    const auto numbering = make_numbering(made.file.signature, static_cast<int>(s / sides),
                                          position.streams[s % sides].order);
    const std::uint64_t step = made.values[s].size() == 1 ? 1 + numbering.positions / 1000
                                                          : one_in + numbering.positions / 100'000;
    int wrong = 0;
    for (std::uint64_t index = 0; index < numbering.positions; index += step) {
        ProbeBoard board = board_at(walk_from(numbering, index));
        board.white_to_move = black ? 0 : 1;
        const ProbeBoard seen = index % 2 == 0 ? board : colours_exchanged(board);
        constexpr int wdls[4] = {2, -2, 1, -1};
        const int wdl = wdls[index % 4];
        const int raw = made.values[s][made.values[s].size() == 1 ? 0 : index];
        const int expected = expected_value(position, dtz, wdl, raw);
        int success = PROBE_GOOD;
        const int read = syzygy_probe_table(seen, wdl, success, dtz ? KIND_DTZ : KIND_WDL);
        if ((success != PROBE_GOOD || read != expected) && wrong++ == 0)
            ADD_FAILURE() << board_text(seen) << " at " << index << " of stream " << s
                          << ": expected " << expected << ", read " << read << ", success "
                          << success;
    }
    EXPECT_EQ(wrong, 0);
}

TEST(MadeUpFiles, BothReadersFindEachValueAtItsPlace) {
    // Leading groups of three men and of two, pawns of one side and of both, equal sides.
    std::vector<std::string> names = {"KQvK", "KPvK", "KRvK", "KPvK", "KBBvK", "KPvKP"};
    if (ALL_POSITIONS)
        for (const char* const name : {"KRvKR", "KNvKP", "KPPvK", "KQvKR", "KRvKP", "KRRRvK",
                                       "KRRvKB", "KPPvKN", "KPPvKP", "KPPPPvK", "KPPPPPvK"})
            names.emplace_back(name);
    std::mt19937_64 random(1);
    for (std::size_t i = 0; i < (ALL_POSITIONS ? VALUES_COUNT : 10) * names.size(); ++i) {
        const std::string& name = names[i % names.size()];
        const FileKind kind = random() % 2 == 0 ? FileKind::WDL : FileKind::DTZ;
        SCOPED_TRACE(name + extension_of(kind) + " " + std::to_string(i));
        const MadeUpFile made =
            make_up(name, kind, static_cast<Values>(i / names.size() % VALUES_COUNT), random);
        const TemporaryDirectory directory;
        directory.write(name + ".rtbw", bytes_of(constant_table(name, {0, 0})));
        const std::string path = directory.write(name + extension_of(kind), bytes_of(made.file));
        syzygy_init(directory.path.c_str());
        tablegen::TableReader reader;
        ASSERT_EQ(open_table(path, made.file.signature, kind, reader), "");
        for (std::size_t s = 0; s < made.values.size(); ++s) {
            EXPECT_TRUE(generator_reads(reader, s, made.values[s])) << s;
            expect_engine_reads(made, s, ALL_POSITIONS ? 1 : 17);
        }
    }
    syzygy_init("");
}

// One byte of the header says how many block lengths there are beyond the last block.
TEST(MadeUpFiles, AnIndexTooCoarseForTheHeaderIsRefused) {
    constexpr tablegen::CompressionSettings coarse = {5, 5, 26, 4095, 65536};
    EXPECT_THROW(tablegen::compress({{0, 9}, {1, 9}}, coarse), std::runtime_error);
}
