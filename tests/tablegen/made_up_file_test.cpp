// The engine's reader, and the generator's own, on files that hold what small genuine tables do
// not. Needs no file from elsewhere.
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/made_up_file.h"

#include <gtest/gtest.h>

namespace brindlemoth {

using tablegen::CompressionSettings;
using tablegen::FileKind;

constexpr std::uint8_t BLACK_TO_MOVE = tablegen::DTZ_BLACK_TO_MOVE;
constexpr std::uint8_t MAPPED = tablegen::DTZ_MAPPED;
constexpr std::uint8_t WINS_IN_PLIES = tablegen::DTZ_WINS_IN_PLIES;
constexpr std::uint8_t LOSSES_IN_PLIES = tablegen::DTZ_LOSSES_IN_PLIES;
constexpr std::uint8_t WIDE_MAPS = tablegen::DTZ_WIDE_MAPS;

static CompressionSettings settings(int block_size_log2, int index_bits, int max_symbols,
                                    std::size_t block_values) {
    CompressionSettings made;
    made.min_block_size_log2 = made.max_block_size_log2 = block_size_log2;
    made.index_bits = index_bits;
    made.max_symbols = max_symbols;
    made.max_block_values = block_values;
    return made;
}

static const CompressionSettings usual;
// One index entry for very many blocks, and the other way round.
static const CompressionSettings sparse_index = settings(5, 18, 4095, 200);
static const CompressionSettings dense_index = settings(10, 3, 4095, 65536);
// No pairs: each value has a code of its own.
static const CompressionSettings no_pairs = settings(8, 12, 0, 65536);

static void expect_all_right(const MadeUpFile& file, ReadBack* looked_at = nullptr) {
    const ReadBack result = write_and_read(file);
    EXPECT_EQ(result.engine_wrong, 0U)
        << file.signature << " of " << result.values << ": " << result.first_wrong;
    EXPECT_EQ(result.judge_wrong, 0U)
        << file.signature << " of " << result.values << ": " << result.first_wrong;
    if (looked_at != nullptr)
        *looked_at = result;
}

TEST(MadeUpFiles, WdlOfEveryShape) {
    const MadeUpFile files[] = {
        // Leading groups of three men and of two; split, and one side for both.
        {"KQvK", FileKind::WDL, true, {{Values::NOISE, 0, usual}}, 1},
        {"KRvK", FileKind::WDL, true, {{Values::CONSTANT, 0, usual}}, 1},
        {"KRvKN", FileKind::WDL, true, {{Values::SHORT_RUNS, 0, usual}}, 1},
        {"KRvKR", FileKind::WDL, false, {{Values::LONG_RUNS, 0, usual}}, 1},
        {"KNvKN", FileKind::WDL, true, {{Values::LONG_RUNS, 0, dense_index}}, 1},
        {"KBBvK", FileKind::WDL, true, {{Values::SHORT_RUNS, 0, sparse_index}}, 1},
        // Pawns of one side, of both, and constant streams among others.
        {"KPvK", FileKind::WDL, true, {{Values::NOISE, 0, sparse_index}}, 1},
        {"KPPvK", FileKind::WDL, true, {{Values::SHORT_RUNS, 0, usual}}, 1},
        {"KNvKP",
         FileKind::WDL,
         true,
         {{Values::CONSTANT, 0, usual},
          {Values::SHORT_RUNS, 0, usual},
          {Values::CONSTANT, 0, usual},
          {Values::LONG_RUNS, 0, usual}},
         1},
        {"KPvKP", FileKind::WDL, false, {{Values::SHORT_RUNS, 0, usual}}, 1},
    };
    for (const MadeUpFile& file : files)
        expect_all_right(file);
}

TEST(MadeUpFiles, DtzOfEveryShape) {
    const MadeUpFile files[] = {
        {"KQvK", FileKind::DTZ, false, {{Values::NOISE, 0, usual}}, 1},
        {"KRvK", FileKind::DTZ, false, {{Values::SHORT_RUNS, BLACK_TO_MOVE, usual}}, 1},
        {"KBvK", FileKind::DTZ, false, {{Values::CONSTANT, MAPPED, usual}}, 1},
        {"KNvK", FileKind::DTZ, false, {{Values::CONSTANT, BLACK_TO_MOVE, usual}}, 1},
        {"KQvKR",
         FileKind::DTZ,
         false,
         {{Values::SHORT_RUNS, MAPPED | WIDE_MAPS | WINS_IN_PLIES, usual}},
         1},
        {"KRvKR", FileKind::DTZ, false, {{Values::NOISE, MAPPED, dense_index}}, 1},
        // Maps of both widths in one file, and streams without any.
        {"KPvK",
         FileKind::DTZ,
         false,
         {{Values::NOISE, MAPPED | LOSSES_IN_PLIES, usual},
          {Values::NOISE, MAPPED | WIDE_MAPS, usual},
          {Values::NOISE, WINS_IN_PLIES, usual},
          {Values::NOISE, MAPPED, usual}},
         1},
        {"KRvKP",
         FileKind::DTZ,
         false,
         {{Values::CONSTANT, BLACK_TO_MOVE, usual},
          {Values::SHORT_RUNS, MAPPED | BLACK_TO_MOVE, usual},
          {Values::SHORT_RUNS, MAPPED | WIDE_MAPS | WINS_IN_PLIES | LOSSES_IN_PLIES, usual},
          {Values::LONG_RUNS, LOSSES_IN_PLIES, usual}},
         1},
    };
    for (const MadeUpFile& file : files)
        expect_all_right(file);
}

TEST(MadeUpFiles, LongCodesAndLongWalks) {
    ReadBack looked_at;
    expect_all_right({"KQvKR", FileKind::DTZ, false, {{Values::SKEWED, 0, no_pairs}}, 1},
                     &looked_at);
    EXPECT_GE(looked_at.longest_code, 18);
    expect_all_right({"KBNvK", FileKind::WDL, true, {{Values::NOISE, 0, sparse_index}}, 7},
                     &looked_at);
    EXPECT_GE(looked_at.blocks, 1000U);
    EXPECT_GE(looked_at.walks_back, 10U);
    EXPECT_GE(looked_at.walks_on, 10U);
}

TEST(MadeUpFiles, MoreMen) {
    // The streams of the first files would hold hundreds of millions of values: they are constant.
    const MadeUpStream constant{Values::CONSTANT, 0, usual};
    const MadeUpStream runs{Values::SHORT_RUNS, 0, usual};
    const MadeUpFile files[] = {
        {"KPPPvK", FileKind::WDL, true, {constant, constant, constant, runs}, 1},
        {"KPPPPvK", FileKind::DTZ, false, {constant, constant, constant, runs}, 1},
    };
    for (const MadeUpFile& file : files)
        expect_all_right(file);
}

TEST(MadeUpFiles, TheOtherSideOfADtzFileIsReportedAsSuch) {
    const TemporaryDirectory directory;
    const tablegen::Signature signature = *tablegen::parse_signature("KQvK");
    for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
        tablegen::TableFile file;
        file.kind = kind;
        file.signature = signature;
        file.positions.resize(1);
        file.positions[0].flags = BLACK_TO_MOVE;
        file.positions[0].streams.resize(kind == FileKind::WDL ? 2 : 1);
        for (tablegen::FileStream& stream : file.positions[0].streams) {
            stream.order = tablegen::possible_orders(signature).front();
            stream.data.constant = true;
        }
        ASSERT_EQ(
            tablegen::write_whole_file(directory.file("KQvK") + extension_of(kind), lay_out(file)),
            "");
    }
    syzygy_init(directory.path.c_str());
    for (const bool white_to_move : {true, false}) {
        ProbeBoard board = empty_board(white_to_move);
        put_man(board, {1, PROBE_KING}, 0);
        put_man(board, {1, PROBE_QUEEN}, 9);
        put_man(board, {0, PROBE_KING}, 60);
        for (const bool exchange : {false, true}) {
            int success = PROBE_GOOD;
            syzygy_probe_table(exchange ? colours_exchanged(board) : board, 2, success, KIND_DTZ);
            EXPECT_EQ(success, white_to_move ? PROBE_OTHER_SIDE : PROBE_GOOD);
        }
    }
    syzygy_init("");
}

} // namespace brindlemoth
