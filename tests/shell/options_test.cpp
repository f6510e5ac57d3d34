// The setoption command, by what a line does to the globals that the options serve.
#include "board/position.h"
#include "book/book.h"
#include "eval/evaluate.h"
#include "search/root.h"
#include "search/transposition.h"
#include "shell/options.h"
#include "support/book_file.h"
#include "support/support.h"
#include "tablebase/syzygy.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// Every test begins with known values and leaves them; no line may be answered.
class Options : public testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }

    static void reset() {
        tt_resize(1);
        multipv_count = 1;
        book_load("");
        syzygy_init("");
        syzygy_probe_limit = 0;
        eval_style = 0;
        init_eval_tables();
    }
    static void set(const std::string& rest) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        cmd_setoption(("setoption" + rest).c_str());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << rest;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << rest;
    }
};

// What the options have set, in one text.
std::string settings() {
    return "entries " + std::to_string(tt_entry_count) + " lines " + std::to_string(multipv_count) +
           " book " + std::to_string(own_book) + " style " + std::to_string(eval_style) + " men " +
           std::to_string(syzygy_probe_limit);
}

TEST_F(Options, HashIsClampedAndRoundedDownToAPowerOfTwo) {
    const struct {
        const char* value;
        std::uint64_t megabytes;
    } ROWS[] = {
        {"2147483648", 2048},
        {"2", 2},
        {"100", 64},
        {"3", 2},
        {"0", 1},
        {"-5", 1},
        {"x", 1},
        {"", 1},
        {"8x", 8},
        {"\t4", 4},
    };
    for (const auto& row : ROWS) {
        set(" name Hash value 16");
        set(std::string(" name Hash value ") + row.value);
        EXPECT_EQ(tt_entry_count, row.megabytes << 16) << row.value;
    }
}

TEST_F(Options, MultiPVIsClampedAndOwnBookIsOnForTheTextTrueOnly) {
    const struct {
        const char* value;
        int lines;
    } ROWS[] = {{"3", 3}, {"256", 256}, {"999", 256}, {"0", 1}, {"-2", 1}, {"many", 1}};
    for (const auto& row : ROWS) {
        multipv_count = 100;
        set(std::string(" name MultiPV value ") + row.value);
        EXPECT_EQ(multipv_count, row.lines) << row.value;
    }
    for (const char* const value :
         {"true", "  true", "truely", "false", "True", "yes", "", "tru"}) {
        const bool on = std::string(value).find("true") != std::string::npos;
        own_book = !on;
        set(std::string(" name OwnBook value ") + value);
        EXPECT_EQ(own_book, on) << value;
    }
}

TEST_F(Options, BookFileTakesTheRestOfTheLineAndSwitchesTheBook) {
    const TemporaryDirectory directory;
    const std::string path =
        directory.write("name value .bin ", book_bytes({{1, 0, 1}, {2, 0, 1}}));

    set(" name BookFile value   " + path);
    EXPECT_TRUE(own_book);
    EXPECT_EQ(book_entry_count, 2);

    set(" name OwnBook value false");
    EXPECT_FALSE(own_book);
    EXPECT_EQ(book_entry_count, 2);

    set(" name BookFile value " + path.substr(0, path.size() - 1)); // no such file
    EXPECT_FALSE(own_book);
    EXPECT_EQ(book_entry_count, 0);
}

TEST_F(Options, StyleRebuildsTheTablesForPositionsSetUpLater) {
    const char* const fen = "4k3/8/8/8/8/8/PPP5/4K3 w - - 0 1";
    const Position before = position_from(fen);
    set(" name Style value Linear");
    EXPECT_EQ(eval_style, 1);
    const Position linear = position_from(fen);
    EXPECT_NE(raw(linear.psq), raw(before.psq));

    // Any other value selects the first style, and the tables are rebuilt for it all the same.
    psq_table[0][0] = Score{};
    set(" name Style value linear");
    EXPECT_EQ(eval_style, 0);
    EXPECT_EQ(raw(position_from(fen).psq), raw(before.psq));
    set(" name Style value Linearly");
    EXPECT_EQ(eval_style, 1);
    EXPECT_EQ(raw(position_from(fen).psq), raw(linear.psq));
}

TEST_F(Options, LinesThatMeanNothingChangeNothing) {
    const std::string before = settings();
    for (const char* const rest : {"",
                                   " ",
                                   " name",
                                   " value",
                                   " name value",
                                   " name Hash",
                                   " name Hash 32",
                                   " name MultiPV",
                                   " name OwnBook",
                                   " name BookFile",
                                   " name Style",
                                   " name SyzygyPath",
                                   " name hash value 32",
                                   " name Has value 32",
                                   " name multipv value 3",
                                   " name ownbook value true",
                                   " name\tHash value 32",
                                   " name Threads value 8",
                                   " name Unknown value 8",
                                   " Name Hash value 32",
                                   " name Hash Value 32"}) {
        set(rest);
        EXPECT_EQ(settings(), before) << rest;
    }
}

TEST_F(Options, WordsAreFoundAnywhereAndNamesMatchAsPrefixes) {
    const struct {
        const char* rest;
        int lines;
    } ROWS[] = {{"name MultiPVvalue 4", 4},
                {" name MultiPVs value 5", 5},
                {" name     MultiPV     value     6", 6},
                {" nameMultiPVvalue7", 7},
                {" value 8 name MultiPV", 8},
                {" value 9 name MultiPV value 10", 9},
                {" name MultiPV name Hash value 11", 11},
                {" name MultiPV is of no value 12 value 13", 12}};
    for (const auto& row : ROWS) {
        set(row.rest);
        EXPECT_EQ(multipv_count, row.lines) << row.rest;
    }
}

TEST_F(Options, SyzygyPathSetsTheProbeLimitUnlessItNamesNoPath) {
    constexpr int UNTOUCHED = 77;
    for (const char* const value : {"", "   ", "<empty>", "  <empty>", "<empty> and more"}) {
        syzygy_probe_limit = UNTOUCHED;
        set(std::string(" name SyzygyPath value") + value);
        EXPECT_EQ(syzygy_probe_limit, UNTOUCHED) << value;
    }
    const TemporaryDirectory without_tables;
    set(" name SyzygyPath value " + without_tables.path);
    EXPECT_EQ(syzygy_probe_limit, 0);
}

} // namespace
} // namespace brindlemoth
