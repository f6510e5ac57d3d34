#include "shell/go_command.h"
#include "support/captured_output.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// The limits that are set, as text in a fixed order.
std::string limits_of(const std::string& line) {
    const SearchLimits limits = read_limits(line.c_str());
    const struct {
        const char* name;
        int value;
    } FIELDS[] = {
        {"wtime", limits.wtime}, {"btime", limits.btime},         {"winc", limits.winc},
        {"binc", limits.binc},   {"movestogo", limits.movestogo}, {"movetime", limits.movetime},
        {"depth", limits.depth}, {"nodes", limits.nodes},
    };
    std::string text;
    for (const auto& field : FIELDS)
        if (field.value != 0)
            text.append(field.name).append(" ").append(std::to_string(field.value)).append(" ");
    return text + (limits.infinite ? "infinite " : "");
}

TEST(GoCommand, Limits) {
    const struct {
        const char* line;
        const char* limits;
    } ROWS[] = {
        {"go", ""},
        {"go wtime 1000 btime 2000 winc 10 binc 20 movestogo 5",
         "wtime 1000 btime 2000 winc 10 binc 20 movestogo 5 "},
        {"go infinite depth 3", "depth 3 infinite "},
        {"go   nodes    7   movetime   9  ", "movetime 9 nodes 7 "},
        {"go depth", ""},
        {"go depth -5", "depth -5 "},
        {"go depth wtime 5", "wtime 5 "},
        {"go depth7", "depth 7 "},
        {"goinfinite", "infinite "},
        {"go xinfinite xdepth 5", ""},
        {"go ponder searchmoves e2e4 mate 3 depth 2", "depth 2 "},
        {"go depth\t6", "depth 6 "},
        {"go\tdepth 6", ""}, // a tab is part of a word
        {"go depth 4294967298", "depth 2 "},
        {"go nodes 2147483648", "nodes -2147483648 "},
        {"go depthinfinite", ""}, // one word, one meaning
    };
    for (const auto& row : ROWS)
        EXPECT_EQ(limits_of(row.line), row.limits) << row.line;
}

TEST(GoCommand, NothingIsCarriedOverAndThePositionStays) {
    Position position = position_from(starting_fen);
    const auto go = [&](const char* line) { return output_of([&] { cmd_go(line, position); }); };
    EXPECT_EQ(go("go depth 3").size(), 4U);
    EXPECT_EQ(go("go depth 2").size(), 3U);
    EXPECT_EQ(position.undo_count, 0);
    EXPECT_EQ(position.key, position_from(starting_fen).key);
    EXPECT_EQ(go("go movetime 0").back().rfind("bestmove ", 0), 0U);
    position = position_from("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1");
    EXPECT_EQ(joined(go("go infinite")), "bestmove 0000\n");
}

} // namespace
} // namespace brindlemoth
