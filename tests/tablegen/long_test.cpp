// What takes minutes: all tables of four men, and big made-up files of five men and more.
#include "solver/solver.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/engine_comparison.h"
#include "tablegen/made_up_file.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>

namespace brindlemoth {

TEST(TablegenLong, FindsKnownCounts) {
    struct {
        const char* name;
        tablegen::TableCounts counts;
    } const rows[] = {
        {"KBNvK", {24536088, 0, 22010352, 464}},
        {"KQvKR", {19733336, 0, 19033672, 13420}},
        {"KPvKP", {14956908, 84732, 9968124, 8}},
        {"KPPvK", {7438086, 0, 7077088, 24}},
    };
    tablegen::TableSet tables;
    for (const auto& row : rows) {
        const tablegen::Table& table =
            solve_closure(*tablegen::parse_signature(row.name), tables, 2);
        EXPECT_EQ(count_positions(table, 2), row.counts) << row.name;
    }
}

struct FourMenSignature : testing::TestWithParam<std::string> {};

TEST_P(FourMenSignature, EveryPositionAgreesWithTheGenuineTable) {
    SKIP_WITHOUT_TABLES();
    syzygy_init(syzygy_directory().c_str());
    tablegen::TableSet tables;
    const Comparison compared = compare_with_engine(
        solve_closure(*tablegen::parse_signature(GetParam()), tables, 2), syzygy_directory());
    std::cout << compared.positions << " positions compared, " << compared.exact_dtz
              << " of them to the ply\n";
    EXPECT_EQ(compared.wrong_wdl + compared.wrong_dtz, 0U) << compared.first_wrong;
    syzygy_init("");
}

std::vector<std::string> four_men_names() {
    std::vector<std::string> names;
    for (const tablegen::Signature& signature : tablegen::all_signatures(4))
        names.push_back(name_of(signature));
    return names;
}

INSTANTIATE_TEST_SUITE_P(Genuine, FourMenSignature, testing::ValuesIn(four_men_names()),
                         [](const auto& row) { return row.param; });

TEST(TablegenLong, TheFourMenSetServesTheEngineAsTheGenuineOneDoes) {
    SKIP_WITHOUT_TABLES();
    const TemporaryDirectory directory;
    std::vector<tablegen::Signature> signatures = tablegen::all_signatures(3);
    for (const tablegen::Signature& signature : tablegen::all_signatures(4))
        signatures.push_back(signature);
    tablegen::TableSet tables;
    std::uintmax_t bytes = 0;
    std::uintmax_t genuine_bytes = 0;
    for (const tablegen::Signature& signature : signatures) {
        tablegen::Table& table = solve_closure(signature, tables, 2);
        write_table(table, directory.path, 2);
        for (const char* extension : {tablegen::WDL_EXTENSION, tablegen::DTZ_EXTENSION}) {
            const std::string name = "/" + name_of(signature) + extension;
            bytes += std::filesystem::file_size(directory.path + name);
            genuine_bytes += std::filesystem::file_size(syzygy_directory() + name);
        }
    }
    EXPECT_LE(bytes, genuine_bytes + genuine_bytes / 2);
    EXPECT_EQ(count_different_root_moves(signatures, 5000, directory.path, syzygy_directory()), 0);
    syzygy_init(directory.path.c_str());
    for (const char* name : {"KPvKP", "KRvKN"}) {
        const Comparison compared = compare_with_engine(*tables.at(name), directory.path);
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
