// Files of solved endgames: what the engine, `tablegen --verify` and a run that goes on read from
// them.
#include "file/table_maker.h"
#include "shelf.h"
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/solved_table.h"
#include "verification/judge.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brindlemoth {

// Some endgames, solved, and their files.
struct SolvedFiles {
    TemporaryDirectory directory;
    SolvedSet set;

    explicit SolvedFiles(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            write_files(solve_into(set, name), directory.path);
    }
};

TEST(TablegenFiles, TheEngineReadsWhatWasSolved) {
    const SolvedFiles files(three_men_signatures());
    syzygy_init(files.directory.path.c_str());
    EXPECT_EQ(syzygy_max_men, 3U);
    for (const std::string& name : three_men_signatures()) {
        const Comparison compared = compare_with_engine(files.set.solved.at(name), 1);
        EXPECT_EQ(compared.wrong_wdl + compared.wrong_dtz, 0U)
            << name << " of " << compared.positions << ": " << compared.first_wrong;
    }
    syzygy_init("");
}

static tablegen::Verdict judge_file(const SolvedTable& table, const tablegen::TableReader& reader) {
    tablegen::Verdict verdict;
    for (const tablegen::Part& part : table.parts)
        add_verdict(verdict, judge(part, reader, [](double) {}));
    return verdict;
}

TEST(TablegenFiles, TheJudgeFindsEveryWrongValue) {
    SolvedFiles files({"KRvK"});
    const SolvedTable& table = files.set.solved.at("KRvK");
    for (const tablegen::FileKind kind : {tablegen::FileKind::WDL, tablegen::FileKind::DTZ}) {
        tablegen::TableFile file = make_file(table, kind);
        const bool dtz = kind == tablegen::FileKind::DTZ;
        const std::string path = files.directory.file("KRvK") + extension_of(kind);
        auto judged = [&] {
            tablegen::TableReader reader;
            EXPECT_EQ(open_table(path, file.signature, kind, reader), "");
            return judge_file(table, reader);
        };
        EXPECT_EQ(judged().wrong, 0U);
        EXPECT_EQ(judged().positions, dtz ? 21959U : 50015U);

        // A file that is sound but says "draw", or one move, everywhere.
        for (tablegen::FileStream& stream : file.positions[0].streams) {
            stream.data = {};
            stream.data.constant = true;
            stream.data.constant_value = dtz ? 0 : 2;
        }
        ASSERT_EQ(tablegen::write_whole_file(path, lay_out(file)), "");
        EXPECT_GT(judged().wrong, 20000U);
    }
}

// Distances around the fifty-move line: those of KRvK, made longer. One of just that length is read
// to the ply, or it would seem to be on the safe side of the line one move earlier.
TEST(TablegenFiles, NoDistanceMovesAcrossTheFiftyMoveLine) {
    SolvedFiles files({"KRvK"});
    int on_the_line = 0;
    for (const int longer : {80, 81}) { // wins or losses have the length
        SolvedTable table = files.set.solved.at("KRvK");
        for (std::vector<tablegen::Cell>& cells : table.parts[0].cells)
            for (tablegen::Cell& cell : cells)
                cell =
                    static_cast<tablegen::Cell>(cell + (tablegen::dtz_matters(cell) ? longer : 0));
        write_files(table, files.directory.path);
        syzygy_init(files.directory.path.c_str());
        int wrong = 0;
        for_all_boards("KRvK", [&](const ProbeBoard& board) {
            const tablegen::Cell cell = cell_of_board(table, board);
            const int distance = std::abs(tablegen::distance_of(cell));
            const int wdl = tablegen::wdl_of_distance(tablegen::distance_of(cell));
            int success = PROBE_GOOD;
            const int read = syzygy_probe_table(board, wdl, success, KIND_DTZ);
            if (success != PROBE_GOOD || !tablegen::dtz_matters(cell))
                return;
            const int short_by = distance - (distance > 100 ? 101 : 1) - read;
            on_the_line += distance == 100 ? 1 : 0;
            wrong += short_by == 0 || (short_by == 1 && distance != 100) ? 0 : 1;
        });
        EXPECT_EQ(wrong, 0);
    }
    EXPECT_GT(on_the_line, 1000);
    syzygy_init("");
}

// Like men, a leading colour that is Black, images on the diagonal and with mirrored pawns, a side
// that stands for both.
TEST(TablegenFiles, ValuesReadBackAreThoseSolved) {
    const std::vector<std::string> names = {"KNNvK", "KPPvK", "KNvKP", "KRvKR"};
    SolvedFiles files(names);
    for (const std::string& name : names) {
        tablegen::Shelf shelf{files.directory.path, 2, {name}, {}};
        const tablegen::Signature signature = *tablegen::parse_signature(name);
        ASSERT_TRUE(read_back(shelf, signature, [](double) {})) << name;
        const tablegen::Table& solved = *files.set.tables.at(name);
        const tablegen::Table& read = *shelf.tables.at(name);
        std::size_t wrong = 0;
        for (const tablegen::Side side : {tablegen::WHITE, tablegen::BLACK})
            for (std::size_t word = 0; word < words_of(solved.layout); ++word)
                wrong += tablegen::unpack(solved.values[side][word]) !=
                         tablegen::unpack(read.values[side][word]);
        EXPECT_EQ(wrong, 0U) << name;
    }
}

TEST(TablegenFiles, DamageIsNoticed) {
    SolvedFiles files({"KPvK"});
    const tablegen::Signature signature = *tablegen::parse_signature("KPvK");
    const std::string path = files.directory.file("KPvK.rtbw");
    const std::string whole = read_file(path);
    auto fault_of = [&](const std::string& content) {
        write_file(path, content);
        tablegen::TableReader reader;
        return open_table(path, signature, tablegen::FileKind::WDL, reader);
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

// Without the checksum, what changes a value is for the judge to find, and all else to survive. The
// engine says which changes those are.
TEST(TablegenFiles, TheJudgeFindsDamageThatTheEngineReads) {
    SolvedFiles files(three_men_signatures());
    const SolvedTable& table = files.set.solved.at("KPvK");
    const tablegen::Signature signature = *tablegen::parse_signature("KPvK");
    for (const tablegen::FileKind kind : {tablegen::FileKind::WDL, tablegen::FileKind::DTZ}) {
        const std::string path = files.directory.file("KPvK") + extension_of(kind);
        const std::string whole = read_file(path);
        int changed = 0;
        for (std::size_t at = 5; at < whole.size() - 16; at += at < 300 ? 7 : 211) {
            std::string content = whole;
            content[at] = static_cast<char>(content[at] ^ (1 << at % 8));
            content[content.size() - 16] = '?'; // no longer our tag
            write_file(path, content);
            syzygy_init(files.directory.path.c_str());
            testing::internal::CaptureStderr();
            const Comparison compared = compare_with_engine(table, 50);
            testing::internal::GetCapturedStderr();
            tablegen::TableReader reader;
            const bool found = !open_table(path, signature, kind, reader).empty() ||
                               judge_file(table, reader).wrong != 0;
            const bool wrong = compared.wrong_wdl + compared.wrong_dtz != 0;
            changed += wrong ? 1 : 0;
            EXPECT_TRUE(found || !wrong) << path << ", byte " << at;
        }
        EXPECT_GT(changed, 10);
        write_file(path, whole);
    }
    syzygy_init("");
}

} // namespace brindlemoth
