// Files of solved endgames: what the engine and `tablegen --verify` read from them.
#include "file/table_maker.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/engine_comparison.h"
#include "verification/judge.h"

#include <gtest/gtest.h>
#include <memory>

namespace brindlemoth {

static const std::vector<tablegen::Signature> three_men = tablegen::all_signatures(3);

// The 3-men endgames, solved, and their files.
struct ThreeMenFiles {
    TemporaryDirectory directory;
    tablegen::TableSet tables;

    ThreeMenFiles() {
        for (const tablegen::Signature& signature : three_men)
            write_table(solve_closure(signature, tables, 2), directory.path, 2);
    }
};

TEST(TablegenFiles, TheEngineReadsWhatWasSolved) {
    ThreeMenFiles files;
    syzygy_init(files.directory.path.c_str());
    EXPECT_EQ(syzygy_max_men, 3U);
    for (const tablegen::Signature& signature : three_men) {
        const Comparison compared =
            compare_with_engine(*files.tables.at(name_of(signature)), files.directory.path);
        EXPECT_EQ(compared.wrong_wdl + compared.wrong_dtz, 0U)
            << name_of(signature) << " of " << compared.positions << ": " << compared.first_wrong;
    }
    syzygy_init("");
}

TEST(TablegenFiles, TheEnginePlaysAsFromTheGenuineOnes) {
    SKIP_WITHOUT_TABLES();
    const ThreeMenFiles files;
    EXPECT_EQ(count_different_root_moves(three_men, 5000, files.directory.path, syzygy_directory()),
              0);
    syzygy_init("");
}

TEST(TablegenFiles, TheJudgeFindsEveryWrongValue) {
    ThreeMenFiles files;
    const tablegen::Signature signature = *tablegen::parse_signature("KRvK");
    const tablegen::Table& table = *files.tables.at("KRvK");
    for (const bool dtz : {false, true}) {
        const std::string path = files.directory.file("KRvK") +
                                 (dtz ? tablegen::DTZ_EXTENSION : tablegen::WDL_EXTENSION);
        auto judge = [&] {
            tablegen::TableReader reader;
            EXPECT_EQ(open_table(path, signature, dtz, reader), "");
            return dtz ? judge_dtz(table, reader, 2) : judge_wdl(table, reader, 2);
        };
        EXPECT_EQ(judge().wrong, 0U);
        EXPECT_EQ(judge().positions, 99778U);

        // A file that is sound but says "draw", or one move, everywhere.
        tablegen::TableFile file = dtz ? make_dtz_file(table, 1, {}) : make_wdl_file(table, 1, {});
        for (tablegen::FileStream& stream : file.positions[0].streams) {
            stream.data = {};
            stream.data.constant = true;
            stream.data.constant_value = dtz ? 0 : 2;
        }
        ASSERT_EQ(tablegen::write_whole_file(path, lay_out(file)), "");
        EXPECT_GT(judge().wrong, 30000U);
    }
}

TEST(TablegenFiles, DamageIsNoticed) {
    ThreeMenFiles files;
    const tablegen::Signature signature = *tablegen::parse_signature("KPvK");
    const std::string path = files.directory.file("KPvK.rtbw");
    const std::string whole = read_file(path);
    auto fault_of = [&](const std::string& content) {
        write_file(path, content);
        tablegen::TableReader reader;
        return open_table(path, signature, false, reader);
    };
    EXPECT_EQ(fault_of(whole), "");
    for (const std::size_t size : {std::size_t{0}, std::size_t{16}, std::size_t{80},
                                   whole.size() - 64, whole.size() - 1, whole.size() + 64}) {
        std::string content = whole;
        content.resize(size);
        EXPECT_NE(fault_of(content), "") << size;
    }
    // Any byte that changes shows in the headers or in the checksum.
    for (std::size_t at = 0; at < whole.size(); at += 7) {
        std::string content = whole;
        content[at] = static_cast<char>(content[at] ^ 0x21);
        const bool in_tag = at >= whole.size() - 16 && at < whole.size() - 8;
        EXPECT_TRUE(in_tag || !fault_of(content).empty()) << at;
    }
}

// Without the checksum, damaged contents are for the reader to survive.
TEST(TablegenFiles, ReadersSurviveDamage) {
    ThreeMenFiles files;
    const tablegen::Signature signature = *tablegen::parse_signature("KPvK");
    const tablegen::Table& table = *files.tables.at("KPvK");
    const std::string path = files.directory.file("KPvK.rtbz");
    const std::string whole = read_file(path);
    int opened = 0;
    for (std::size_t at = 4; at < whole.size() - 16; at += at < 700 ? 1 : 37) {
        std::string content = whole;
        content[at] = static_cast<char>(content[at] ^ (1 << at % 8));
        content[content.size() - 16] = '?'; // no longer our tag
        write_file(path, content);
        tablegen::TableReader reader;
        if (open_table(path, signature, true, reader).empty()) {
            ++opened;
            if (at % 16 == 0)
                judge_dtz(table, reader, 2);
        }
    }
    EXPECT_GT(opened, 100);
}

} // namespace brindlemoth
