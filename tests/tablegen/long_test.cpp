// What takes minutes: all tables of four men, and big made-up files of five men and more.
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/made_up_file.h"
#include "tablegen/solved_table.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace brindlemoth {

struct FourMenSignature : testing::TestWithParam<std::string> {};

TEST_P(FourMenSignature, EveryPositionAgreesWithTheGenuineTable) {
    SKIP_WITHOUT_TABLES();
    SolvedSet set;
    const SolvedTable& table = solve_into(set, GetParam());
    syzygy_init(syzygy_directory().c_str());
    const Comparison compared = compare_with_engine(table, 1);
    syzygy_init("");
    EXPECT_EQ(compared.wrong_wdl + compared.wrong_dtz, 0U)
        << "of " << compared.positions << ": " << compared.first_wrong;
}

INSTANTIATE_TEST_SUITE_P(Genuine, FourMenSignature, testing::ValuesIn(four_men_signatures()),
                         [](const auto& row) { return row.param; });

TEST(TablegenLong, TheFourMenSetIsAsSmallAsTheGenuineOne) {
    SKIP_WITHOUT_TABLES();
    const TemporaryDirectory directory;
    SolvedSet set;
    std::uintmax_t bytes = 0;
    std::uintmax_t genuine_bytes = 0;
    for (const std::string& signature : four_men_signatures()) {
        write_files(solve_into(set, signature), directory.path);
        for (const char* extension : {".rtbw", ".rtbz"}) {
            bytes += std::filesystem::file_size(directory.file(signature) + extension);
            genuine_bytes +=
                std::filesystem::file_size(syzygy_directory() + "/" + signature + extension);
        }
    }
    EXPECT_LE(100 * bytes, 107 * genuine_bytes);
    for (const std::string& signature : three_men_signatures())
        write_files(set.solved.at(signature), directory.path);
    syzygy_init(directory.path.c_str());
    for (const char* name : {"KPvKP", "KRvKN"}) {
        const Comparison compared = compare_with_engine(set.solved.at(name), 1);
        EXPECT_EQ(compared.wrong_wdl + compared.wrong_dtz, 0U)
            << name << " of " << compared.positions << ": " << compared.first_wrong;
    }
    syzygy_init("");
}

TEST(TablegenLong, MadeUpFilesOfFiveMenAndMore) {
    using tablegen::FileKind;
    const MadeUpStream constant{Values::CONSTANT, 0, {}};
    const MadeUpStream runs{Values::SHORT_RUNS, 0, {}};
    const MadeUpStream long_runs{Values::LONG_RUNS, 0, {}};
    const MadeUpStream wide{Values::SHORT_RUNS,
                            tablegen::DTZ_MAPPED | tablegen::DTZ_WIDE_MAPS |
                                tablegen::DTZ_BLACK_TO_MOVE,
                            {}};
    const MadeUpFile files[] = {
        {"KRRRvK", FileKind::WDL, true, {runs}, 1},
        {"KQQQvK", FileKind::DTZ, false, {{Values::LONG_RUNS, tablegen::DTZ_BLACK_TO_MOVE, {}}}, 1},
        {"KRRvKB", FileKind::DTZ, false, {wide}, 1},
        {"KPPvKN", FileKind::WDL, true, {constant, constant, constant, runs}, 1},
        {"KPPvKP", FileKind::WDL, true, {constant, constant, constant, runs}, 1},
        {"KPPvKP",
         FileKind::DTZ,
         false,
         {{Values::CONSTANT, tablegen::DTZ_BLACK_TO_MOVE, {}}, wide},
         5},
        {"KBNvK", FileKind::WDL, true, {runs}, 1},
        // Two groups of two pawns each: some 130 million values on file d.
        {"KPPvKPP", FileKind::DTZ, false, {constant, constant, constant, long_runs}, 3},
        {"KPPPPvK", FileKind::WDL, true, {constant, constant, constant, runs}, 1},
        {"KPPPPPvK", FileKind::WDL, true, {constant, constant, constant, runs}, 1},
    };
    for (const MadeUpFile& file : files) {
        const ReadBack result = write_and_read(file);
        EXPECT_EQ(result.engine_wrong + result.judge_wrong, 0U)
            << file.signature << " of " << result.values << ": " << result.first_wrong;
    }
}

} // namespace brindlemoth
