// The setoption command: which of the global settings a line changes.
#include "board/position.h"
#include "book/book.h"
#include "eval/evaluate.h"
#include "search/root.h"
#include "search/transposition.h"
#include "shell/options.h"
#include "support/book_file.h"
#include "support/captured_output.h"
#include "support/system.h"
#include "tablebase/syzygy.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

// Every line begins with known values, and none may be answered.
class Options : public testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }

    static void reset() {
        tt_resize(16);
        multipv_count = 100;
        book_load("");
        syzygy_init("");
        syzygy_probe_limit = 77;
        eval_style = 0;
        init_eval_tables();
    }
    static void set(const std::string& rest) {
        EXPECT_EQ(output_of([&] { cmd_setoption(("setoption" + rest).c_str()); }), Lines()) << rest;
    }
    // The settings that the line changes, as text.
    static std::string changed_by(const std::string& rest) {
        reset();
        const Lines before = settings();
        set(rest);
        const Lines after = settings();
        std::string text;
        for (std::size_t i = 0; i < after.size(); ++i)
            text += after[i] != before[i] ? after[i] : "";
        return text;
    }
    static Lines settings() {
        return {"hash " + std::to_string(tt_entry_count >> 16),
                "lines " + std::to_string(multipv_count), "book " + std::to_string(own_book),
                "style " + std::to_string(eval_style), "men " + std::to_string(syzygy_probe_limit)};
    }
};

TEST_F(Options, EachLineChangesOneSettingAtMost) {
    const TemporaryDirectory without_tables;
    const struct {
        std::string rest, changed;
    } ROWS[] = {
        // Clamped, and the size rounded down to a power of two.
        {" name Hash value 2147483648", "hash 2048"},
        {" name Hash value 100", "hash 64"},
        {" name Hash value -5", "hash 1"},
        {" name Hash value\t8x", "hash 8"},
        {" name MultiPV value 256", "lines 256"},
        {" name MultiPV value 999", "lines 256"},
        {" name MultiPV value 0", "lines 1"},
        {" name OwnBook value   truely", "book 1"},
        {" name OwnBook value True", ""},
        {" name Style value   Linearly", "style 1"},
        {" name Style value linear", ""},
        {" name SyzygyPath value   ", ""},
        {" name SyzygyPath value <empty> and more", ""},
        {" name SyzygyPath value " + without_tables.path, "men 0"},
        // Lines that mean nothing.
        {"", ""},
        {" name value", ""},
        {" name Hash", ""},
        {" name Hash 32", ""},
        {" name hash value 32", ""},
        {" name Has value 32", ""},
        {" name\tHash value 32", ""},
        {" name Threads value 8", ""},
        {" Name Hash value 32", ""},
        // The words are found anywhere, and names match as prefixes.
        {"name MultiPVvalue 4", "lines 4"},
        {" value 9 name MultiPV value 10", "lines 9"},
        {" name MultiPV name Hash value 11", "lines 11"},
        {" name MultiPV is of no value 12 value 13", "lines 12"},
    };
    for (const auto& row : ROWS)
        EXPECT_EQ(changed_by(row.rest), row.changed) << row.rest;
}

TEST_F(Options, BookFileTakesTheRestOfTheLineAndSwitchesTheBook) {
    if (!on_posix)
        GTEST_SKIP() << "no name of a file ends in a blank";
    const TemporaryDirectory directory;
    const std::string path =
        directory.write("name value .bin ", book_bytes({{1, 0, 1}, {2, 0, 1}}));
    const struct {
        std::string rest;
        bool on;
        int entries;
    } ROWS[] = {{" name BookFile value   " + path, true, 2},
                {" name OwnBook value false", false, 2},
                {" name OwnBook value true", true, 2},
                {" name BookFile value " + path.substr(0, path.size() - 1), false, 0}};
    for (const auto& row : ROWS) {
        set(row.rest);
        EXPECT_EQ(own_book, row.on) << row.rest;
        EXPECT_EQ(book_entry_count, row.entries) << row.rest;
    }
}

TEST_F(Options, StyleRebuildsTheTablesForPositionsSetUpLater) {
    const char* const fen = "4k3/8/8/8/8/8/PPP5/4K3 w - - 0 1";
    const Score before = position_from(fen).psq;
    set(" name Style value Linear");
    EXPECT_NE(raw(position_from(fen).psq), raw(before));
    psq_table[0][0] = Score{};
    set(" name Style value any other");
    EXPECT_EQ(raw(position_from(fen).psq), raw(before));
}
