#include "shell/go_command.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

// The limits that are set, as text in a fixed order.
static std::string limits_of(const std::string& line) {
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
        {"go wtime 1000 btime 2000 winc 10 binc 20 movestogo 5",
         "wtime 1000 btime 2000 winc 10 binc 20 movestogo 5 "},
        {"go infinite depth 3", "depth 3 infinite "},
        {"go   nodes    7   movetime   9  ", "movetime 9 nodes 7 "},
        {"go depth wtime 5", "wtime 5 "},
        {"go depth7", "depth 7 "},
        {"goinfinite", "infinite "},
        {"go xinfinite xdepth 5", ""},
        // Numbers, white space before them and all.
        {"go depth 0x10 nodes 1e3 wtime \t\r\n 42 btime +6 winc --6 binc x movestogo -",
         "wtime 42 btime 6 nodes 1 "},
        {"go\tdepth 6", ""}, // a tab is part of a word
        {"go movetime 4294967295 nodes -3000000000", "movetime 2147483647 nodes -2147483648 "},
        {"go depthinfinite", ""}, // one word, one meaning
    };
    for (const auto& row : ROWS)
        EXPECT_EQ(limits_of(row.line), row.limits) << row.line;
}
