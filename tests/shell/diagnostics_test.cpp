#include "board/bitboard.h"
#include "eval/evaluate.h"
#include "search/root.h"
#include "search/transposition.h"
#include "shell/diagnostics.h"
#include "support/captured_output.h"
#include "support/support.h"

#include <gtest/gtest.h>
#include <regex>

namespace brindlemoth {
namespace {

class Bench : public testing::Test {
protected:
    void SetUp() override {
        tt_resize(64);
        multipv_count = 1;
        set_style(0);
    }
    void TearDown() override { set_style(0); }

    static void set_style(int style) {
        eval_style = style;
        init_eval_tables();
    }
};

std::string nodes_of(const Lines& lines) {
    for (const std::string& line : lines)
        if (line.starts_with("Nodes   : "))
            return line.substr(10);
    return "none";
}

// The signature of the program: the rules of evaluation and search fix these totals. A change
// that is to make it faster keeps them; one that is to make it stronger measures them anew.
TEST_F(Bench, Signature) {
    const struct {
        int depth;
        const char* pesto;
        const char* linear;
    } ROWS[] = {{1, "667", "734"},     {2, "1535", "1383"},    {3, "3083", "2398"},
                {4, "6618", "5631"},   {5, "12533", "16138"},  {6, "22543", "24667"},
                {7, "34790", "43682"}, {8, "103560", "108748"}};
    for (const auto& row : ROWS) {
        set_style(0);
        EXPECT_EQ(nodes_of(output_of([&] { cmd_bench(row.depth); })), row.pesto) << row.depth;
        set_style(1);
        EXPECT_EQ(nodes_of(output_of([&] { cmd_bench(row.depth); })), row.linear) << row.depth;
    }
}

// The last line of each position.
const char* const BENCH_6 =
    "info depth 6 seldepth 10 score cp 20 nodes 3136 pv d2d4 d7d5 b1c3 g8f6 g1f3 b8c6\n"
    "info depth 6 seldepth 16 score cp -23 nodes 5205 pv e2a6 b4c3 d2c3 e6d5 g2g3 d5e4\n"
    "info depth 6 seldepth 10 score cp 46 nodes 4175 pv b4f4 h4g3 f4c4 h5h7 b5b6 h7h5 a5a6 c7b6\n"
    "info depth 6 seldepth 18 score cp -326 nodes 7317 pv c4c5 b6c5 b4c5 a3c5 d2d4 c5a7 a1b1 a5c4 "
    "a4b3\n"
    "info depth 6 seldepth 10 score cp 628 nodes 2710 pv d7c8q d8c8 e1f2 b7b5 c4d3 b5b4\n";

TEST_F(Bench, LinesOfDepth6) {
    Position position = position_from(starting_fen);
    SearchLimits limits{};
    limits.depth = 6;
    output_of([&] { search_root(position, limits); }); // of which bench remembers nothing
    Lines lines = output_of([] { cmd_bench(6); });
    ASSERT_GE(lines.size(), 6U);
    EXPECT_TRUE(std::regex_match(joined({lines.end() - 6, lines.end()}),
                                 std::regex("\n=== Bench ===\nDepth   : 6\nNodes   : 22543\n"
                                            "Time    : [0-9]+ ms\nNPS     : [0-9]+\n")));
    std::string last_lines;
    for (const std::string& line : lines)
        if (line.starts_with("info depth 6 "))
            last_lines += without_timing(line) + "\n";
    EXPECT_EQ(last_lines, BENCH_6);
}

TEST(Dupcheck, CountsAndReportsPairs) {
    // A record gone wrong: the rook's square holds a queen as well.
    Position position = position_from("8/8/8/8/8/P7/1P6/R1b5 w - - 0 1");
    position.pieces[WHITE][QUEEN] |= square_bit(A1);
    EXPECT_EQ(joined(output_of([&] { cmd_dupcheck(position); })),
              "DUPLICATE: a1b1 (indices 3 and 6)\n"
              "DUPLICATE: a1c1 (indices 4 and 7)\n"
              "DUPLICATE: a1a2 (indices 5 and 8)\n"
              "Total pseudo-legal: 9, Duplicates: 3\n");
}

TEST(Illegalcheck, ReportsMovesThatLeaveTheKingInCheck) {
    // A record gone wrong: empty squares count as occupied and seem to shield the king.
    Position position = position_from("4r3/8/8/8/7b/8/8/4K3 w - - 0 1");
    position.all_pieces |= square_bit(E4) | square_bit(G3);
    EXPECT_EQ(joined(output_of([&] { cmd_illegalcheck(position); })),
              "ILLEGAL (king in check): e1e2  pawn=0 knight=0 king=0 diag=0 orth=1\n"
              "ILLEGAL (king in check): e1f2  pawn=0 knight=0 king=0 diag=1 orth=0\n");
}

} // namespace
} // namespace brindlemoth
