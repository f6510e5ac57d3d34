// The engine's reader, and the generator's own, on files that hold what small genuine tables do
// not. Needs no file from elsewhere.
#include "tablegen/made_up_file.h"

#include <gtest/gtest.h>
#include <span>

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

static void expect_all_right(MadeUpFile file, ReadBack* looked_at = nullptr) {
    // The engine reads all values in one program, and a sample in another.
    file.every *= ALL_POSITIONS ? 1 : 17;
    const ReadBack result = write_and_read(file);
    EXPECT_EQ(result.engine_wrong, 0U)
        << file.signature << " of " << result.values << ": " << result.first_wrong;
    EXPECT_EQ(result.judge_wrong, 0U)
        << file.signature << " of " << result.values << ": " << result.first_wrong;
    if (looked_at != nullptr)
        *looked_at = result;
}

// Reads all the files back. Returns how many of their streams have a leading group of men that does
// not vary fastest.
static int later_turns_of(std::span<const MadeUpFile> files) {
    int later_turns = 0;
    for (const MadeUpFile& file : files) {
        ReadBack looked_at;
        expect_all_right(file, &looked_at);
        later_turns += looked_at.later_turns;
    }
    return later_turns;
}

static MadeUpStream stream_of(Values values, int dtz_flags = 0,
                              const CompressionSettings& how = usual) {
    return {values, static_cast<std::uint8_t>(dtz_flags), how};
}

TEST(MadeUpFiles, WdlOfEveryShape) {
    const MadeUpStream constant = stream_of(Values::CONSTANT);
    const MadeUpStream short_runs = stream_of(Values::SHORT_RUNS);
    const MadeUpStream long_runs = stream_of(Values::LONG_RUNS);
    const MadeUpFile files[] = {
        // Leading groups of three men and of two; both sides to move, or one for both.
        {"KQvK", FileKind::WDL, true, {stream_of(Values::NOISE)}, 1},
        {"KRvK", FileKind::WDL, true, {constant}, 1},
        {"KRvKR", FileKind::WDL, false, {long_runs}, 1},
        {"KNvKN", FileKind::WDL, true, {stream_of(Values::LONG_RUNS, 0, dense_index)}, 1},
        {"KBBvK", FileKind::WDL, true, {stream_of(Values::SHORT_RUNS, 0, sparse_index)}, 1},
        // Pawns of one side, of both, and constant streams among others.
        {"KPvK", FileKind::WDL, true, {stream_of(Values::NOISE, 0, sparse_index)}, 1},
        {"KPPvK", FileKind::WDL, true, {constant, constant, short_runs, long_runs}, 1},
        {"KNvKP", FileKind::WDL, true, {constant, short_runs, constant}, 1},
        {"KPvKP", FileKind::WDL, false, {short_runs, constant, constant, long_runs}, 1},
    };
    EXPECT_GE(later_turns_of(files), 3);
}

TEST(MadeUpFiles, DtzOfEveryShape) {
    const MadeUpFile files[] = {
        {"KQvK", FileKind::DTZ, false, {stream_of(Values::NOISE)}, 1},
        {"KRvK", FileKind::DTZ, false, {stream_of(Values::SHORT_RUNS, BLACK_TO_MOVE)}, 1},
        {"KBvK", FileKind::DTZ, false, {stream_of(Values::CONSTANT, MAPPED)}, 1},
        {"KNvK", FileKind::DTZ, false, {stream_of(Values::CONSTANT, BLACK_TO_MOVE)}, 1},
        {"KQvKR",
         FileKind::DTZ,
         false,
         {stream_of(Values::SHORT_RUNS, MAPPED | WIDE_MAPS | WINS_IN_PLIES)},
         1},
        {"KQQvK", FileKind::DTZ, false, {stream_of(Values::NOISE, MAPPED, dense_index)}, 1},
        // Maps of both widths in one file, and streams without any.
        {"KPvK",
         FileKind::DTZ,
         false,
         {stream_of(Values::NOISE, MAPPED | LOSSES_IN_PLIES),
          stream_of(Values::NOISE, MAPPED | WIDE_MAPS), stream_of(Values::NOISE, WINS_IN_PLIES),
          stream_of(Values::NOISE, MAPPED)},
         1},
        {"KRvKP",
         FileKind::DTZ,
         false,
         {stream_of(Values::CONSTANT, BLACK_TO_MOVE),
          stream_of(Values::CONSTANT, MAPPED | BLACK_TO_MOVE),
          stream_of(Values::SHORT_RUNS,
                    MAPPED | WIDE_MAPS | WINS_IN_PLIES | LOSSES_IN_PLIES | BLACK_TO_MOVE),
          stream_of(Values::CONSTANT, LOSSES_IN_PLIES | BLACK_TO_MOVE)},
         1},
    };
    EXPECT_GE(later_turns_of(files), 3);
}

TEST(MadeUpFiles, LongCodesAndLongWalks) {
    ReadBack looked_at;
    expect_all_right({"KQvKR", FileKind::DTZ, false, {{Values::SKEWED, 0, no_pairs}}, 1},
                     &looked_at);
    EXPECT_GE(looked_at.longest_code, 18);
    expect_all_right({"KBBvK", FileKind::WDL, true, {{Values::NOISE, 0, sparse_index}}, 1},
                     &looked_at);
    EXPECT_GE(looked_at.blocks, 1000U);
    EXPECT_GE(looked_at.walks_back, 6U);
    EXPECT_GE(looked_at.walks_on, 6U);
}

TEST(MadeUpFiles, MoreMen) {
    // Streams that would hold hundreds of millions of values are constant.
    const MadeUpStream constant{Values::CONSTANT, 0, usual};
    const MadeUpStream runs{Values::SHORT_RUNS, 0, usual};
    const MadeUpFile files[] = {
        {"KPPPvK", FileKind::WDL, true, {constant, constant, constant, runs}, 1},
        {"KPPPPvK", FileKind::DTZ, false, {constant, constant, constant, runs}, 1},
        {"KQRvKBN", FileKind::WDL, true, {constant}, 1},
        {"KQQvKRR", FileKind::DTZ, false, {constant}, 1},
        {"KPPvKPP", FileKind::WDL, false, {constant}, 1},
    };
    for (const MadeUpFile& file : files)
        expect_all_right(file);
}

} // namespace brindlemoth
