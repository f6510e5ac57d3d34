// Files of solved endgames: what the engine, `tablegen --verify` and a run that goes on read from
// them.
#include "table_cache.h"
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/plain_table.h"
#include "tablegen/solved_table.h"
#include "verification/judge.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace brindlemoth;

// The files of some endgames.
static void write_solved(const TemporaryDirectory& directory,
                         const std::vector<std::string>& names) {
    for (const std::string& name : names)
        write_files(solved_table(name), directory.path);
}

// And the files are about as small as the published ones.
TEST(TablegenFiles, TheEngineReadsWhatWasSolved) {
    const TemporaryDirectory directory;
    for (std::size_t men = 3; men <= (ALL_POSITIONS ? 4 : 3); ++men) {
        const std::vector<std::string> names = signatures_of(men);
        write_solved(directory, names);
        syzygy_init(directory.path.c_str());
        EXPECT_EQ(syzygy_max_men, men);
        for (const std::string& name :
             men == 3 ? names : std::vector<std::string>{"KPvKP", "KRvKN"})
            expect_engine_agrees(name, men == 3 ? 3 : 1);
        if (published_tables().empty())
            continue;
        std::uintmax_t bytes[2] = {0, 0};
        for (const std::string& name : names)
            for (const std::string& file : {name + ".rtbw", name + ".rtbz"})
                for (const bool published : {false, true})
                    bytes[published] += std::filesystem::file_size(
                        (published ? published_tables() : directory.path) + "/" + file);
        EXPECT_LE(100 * bytes[0], 107 * bytes[1]);
    }
    syzygy_init("");
}

static tablegen::Verdict judge_file(const SolvedTable& table, const tablegen::TableReader& reader) {
    tablegen::Verdict verdict;
    for (const tablegen::Part& part : table.parts)
        add_verdict(verdict, judge(part, reader, {}));
    return verdict;
}

// Whether readers look the position up in a DTZ file.
static bool dtz_matters(tablegen::Outcome outcome) {
    return tablegen::is_legal(outcome) && tablegen::distance_of(outcome) != 0 &&
           (outcome & tablegen::OUTCOME_ZEROES) == 0;
}

// Distances around the fifty-move line: those of KRvK, made longer. One of just that length is read
// to the ply, or it would seem to be on the safe side of the line one move earlier.
TEST(TablegenFiles, NoDistanceMovesAcrossTheFiftyMoveLine) {
    const TemporaryDirectory directory;
    int on_the_line = 0;
    for (const int longer : {80, 81}) { // wins or losses have the length
        SolvedTable table = solved_table("KRvK");
        for (std::vector<tablegen::Outcome>& outcomes : table.parts[0].outcomes)
            for (tablegen::Outcome& outcome : outcomes)
                outcome =
                    static_cast<tablegen::Outcome>(outcome + (dtz_matters(outcome) ? longer : 0));
        write_files(table, directory.path);
        syzygy_init(directory.path.c_str());
        int wrong = 0;
        for_positions(table, 1, [&](const ProbeBoard& board, tablegen::Outcome outcome) {
            const int distance = std::abs(tablegen::distance_of(outcome));
            const int wdl = tablegen::wdl_of_distance(tablegen::distance_of(outcome));
            int success = PROBE_GOOD;
            const int read = syzygy_probe_table(board, wdl, success, KIND_DTZ);
            if (success != PROBE_GOOD || !dtz_matters(outcome))
                return;
            const int short_by = distance - (distance > 100 ? 101 : 1) - read;
            on_the_line += distance == 100 ? 1 : 0;
            wrong += short_by == 0 || (short_by == 1 && distance != 100) ? 0 : 1;
        });
        EXPECT_EQ(wrong, 0);
        syzygy_init(""); // what is mapped cannot be written to everywhere
    }
    EXPECT_GT(on_the_line, 1000);
}

// Like men, a leading colour that is Black, images on the diagonal and with mirrored pawns, a side
// that stands for both.
TEST(TablegenFiles, ValuesReadBackAreThoseSolved) {
    const TemporaryDirectory directory;
    for (const std::string name : {"KNNvK", "KPPvK", "KNvKP", "KRvKR"}) {
        write_solved(directory, {name});
        tablegen::TableCache cache{directory.path, 2, {name}, {}};
        const tablegen::Signature signature = *tablegen::parse_signature(name);
        tablegen::Progress progress;
        ASSERT_TRUE(read_back(cache, signature, progress)) << name;
        const tablegen::Table& solved = *shared_set().tables.at(name);
        const tablegen::Table& read = *cache.tables.at(name);
        std::size_t wrong = 0;
        for (const tablegen::Side side : {tablegen::WHITE, tablegen::BLACK})
            for (std::size_t word = 0; word < words_of(solved.layout); ++word)
                wrong += tablegen::unpack(solved.values[side][word]) !=
                         tablegen::unpack(read.values[side][word]);
        EXPECT_EQ(wrong, 0U) << name;
    }
}

// Any byte that changes shows in the headers or in the checksum. Without the checksum, what changes
// a value is for the judge to find, and all else to survive: the engine says which changes those
// are.
TEST(TablegenFiles, DamageIsNoticed) {
    const TemporaryDirectory directory;
    write_solved(directory, signatures_of(3));
    const SolvedTable& table = solved_table("KPvK");
    for (const tablegen::FileKind kind : {tablegen::FileKind::WDL, tablegen::FileKind::DTZ}) {
        const std::string name = std::string("KPvK") + extension_of(kind);
        const std::string whole = read_file(directory.file(name));
        const std::size_t end = whole.size() - tablegen::TRAILER_BYTES;
        tablegen::TableReader reader;
        const auto fault_of = [&](const std::string& content) {
            reader = {};
            return open_table(directory.write(name, content), table.layout().signature, kind,
                              reader);
        };
        EXPECT_EQ(fault_of(whole), "");
        EXPECT_EQ(judge_file(table, reader).wrong, 0U);
        for (const std::size_t size : {std::size_t{0}, std::size_t{16}, std::size_t{80},
                                       whole.size() - 64, whole.size() - 1, whole.size() + 64}) {
            std::string content = whole;
            content.resize(size);
            EXPECT_NE(fault_of(content), "") << size;
        }
        int changed = 0;
        for (std::size_t at = 0; at < end + 8; at += at < 300 ? 7 : 211) {
            std::string content = whole;
            content[at] = static_cast<char>(content[at] ^ (1 << at % 8));
            EXPECT_TRUE(at >= end || !fault_of(content).empty()) << name << ", byte " << at;
            content[end] = '?'; // no longer our tag
            const bool found = !fault_of(content).empty() || judge_file(table, reader).wrong != 0;
            syzygy_init(directory.path.c_str());
            testing::internal::CaptureStderr();
            std::string first_wrong;
            const bool wrong = wrong_answers("KPvK", 50, first_wrong) != 0;
            testing::internal::GetCapturedStderr();
            syzygy_init("");
            changed += wrong ? 1 : 0;
            EXPECT_TRUE(found || !wrong) << name << ", byte " << at;
        }
        EXPECT_GT(changed, 10);
        directory.write(name, whole);
    }
}
