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
        if (line.rfind("Nodes   : ", 0) == 0)
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

const char* const BENCH_6 =
    "info depth 1 seldepth 1 score cp 113 nodes 49 pv d2d4\n"
    "info depth 2 seldepth 4 score cp 20 nodes 198 pv d2d4 d7d5\n"
    "info depth 3 seldepth 4 score cp 64 nodes 355 pv d2d4 d7d5 g1f3\n"
    "info depth 4 seldepth 7 score cp 20 nodes 785 pv d2d4 d7d5 g1f3 g8f6\n"
    "info depth 5 seldepth 8 score cp 52 nodes 1307 pv d2d4 d7d5 g1f3 g8f6 b1c3\n"
    "info depth 6 seldepth 10 score cp 20 nodes 3136 pv d2d4 d7d5 b1c3 g8f6 g1f3 b8c6\n"
    "bestmove d2d4\n"
    "info depth 1 seldepth 7 score cp 131 nodes 130 pv e2a6 b4c3\n"
    "info depth 2 seldepth 7 score cp 88 nodes 393 pv e2a6 h3g2\n"
    "info depth 3 seldepth 9 score cp 20 nodes 1069 pv d5e6 a6e2 c3e2\n"
    "info depth 4 seldepth 9 score cp 20 nodes 1577 pv d5e6 a6e2 c3e2 d7e6\n"
    "info depth 5 seldepth 11 score cp 46 nodes 2674 pv e2a6 b4c3 d2c3 h3g2 f3g2\n"
    "info depth 6 seldepth 16 score cp -23 nodes 5205 pv e2a6 b4c3 d2c3 e6d5 g2g3 d5e4\n"
    "bestmove e2a6\n"
    "info depth 1 seldepth 1 score cp 101 nodes 29 pv b4f4\n"
    "info depth 2 seldepth 5 score cp 81 nodes 218 pv b4c4 h5e5\n"
    "info depth 3 seldepth 6 score cp 84 nodes 485 pv b4f4 h4g3 f4c4 h5h7\n"
    "info depth 4 seldepth 8 score cp 86 nodes 1364 pv b4c4 h5e5 c4f4 h4g3 f4f7\n"
    "info depth 5 seldepth 8 score cp 86 nodes 1855 pv b4c4 h5e5 c4f4 h4g3 f4f7 e5e2 f7c7\n"
    "info depth 6 seldepth 10 score cp 46 nodes 4175 pv b4f4 h4g3 f4c4 h5h7 b5b6 h7h5 a5a6 c7b6\n"
    "bestmove b4f4\n"
    "info depth 1 seldepth 11 score cp -67 nodes 354 pv c4c5 b2a1q d1a1 a3a4 c5b6 a4b4 b6c7 b4b5\n"
    "info depth 2 seldepth 11 score cp -67 nodes 506 pv c4c5 b2a1q d1a1\n"
    "info depth 3 seldepth 11 score cp -67 nodes 748 pv c4c5 b2a1q d1a1 a3a4\n"
    "info depth 4 seldepth 13 score cp -234 nodes 2207 pv c4c5 b6c5 b4c5 a3c5 d2d4 c5a7 a1b1\n"
    "info depth 5 seldepth 15 score cp -308 nodes 4935 pv c4c5 b6c5 b4c5 a3c5 d2d4 c5a7 a1b1 a5c4\n"
    "info depth 6 seldepth 18 score cp -326 nodes 7317 pv c4c5 b6c5 b4c5 a3c5 d2d4 c5a7 a1b1 a5c4 "
    "a4b3\n"
    "bestmove c4c5\n"
    "info depth 1 seldepth 4 score cp 445 nodes 105 pv d7c8q\n"
    "info depth 2 seldepth 5 score cp 600 nodes 220 pv d7c8q f2d1 c8d8 e7d8 e1d1\n"
    "info depth 3 seldepth 5 score cp 600 nodes 426 pv d7c8q f2d1 c8d8\n"
    "info depth 4 seldepth 8 score cp 600 nodes 685 pv d7c8q f2d1 c8d8 e7d8 e1d1\n"
    "info depth 5 seldepth 8 score cp 651 nodes 1762 pv d7c8q d8c8 e1f2 e7c5 e2d4 b8d7\n"
    "info depth 6 seldepth 10 score cp 628 nodes 2710 pv d7c8q d8c8 e1f2 b7b5 c4d3 b5b4\n"
    "bestmove d7c8q\n";

TEST_F(Bench, LinesOfDepth6) {
    Position position = position_from(sample_fens().front());
    SearchLimits limits{};
    limits.depth = 6;
    output_of([&] { search_root(position, limits); }); // of which bench remembers nothing
    Lines lines = output_of([] { cmd_bench(6); });
    ASSERT_GE(lines.size(), 6U);
    const Lines summary(lines.end() - 6, lines.end());
    lines.resize(lines.size() - 6);
    for (std::string& line : lines)
        line = without_timing(line);
    EXPECT_EQ(joined(lines), BENCH_6);

    EXPECT_TRUE(std::regex_match(joined(summary),
                                 std::regex("\n=== Bench ===\nDepth   : 6\nNodes   : 22543\n"
                                            "Time    : [0-9]+ ms\nNPS     : [0-9]+\n")));
}

std::string dupcheck(const Position& position) {
    return joined(output_of([&] { cmd_dupcheck(position); }));
}

TEST(Dupcheck, CountsAndReportsPairs) {
    EXPECT_EQ(dupcheck(position_from(starting_fen)), "Total pseudo-legal: 20, Duplicates: 0\n");
    EXPECT_EQ(dupcheck(position_from("8/8/8/8/8/8/8/8 w - - 0 1")),
              "Total pseudo-legal: 0, Duplicates: 0\n");
    // A record gone wrong: the rook's square holds a queen as well.
    Position position = position_from("8/8/8/8/8/P7/1P6/R1b5 w - - 0 1");
    position.pieces[WHITE][QUEEN] |= square_bit(A1);
    EXPECT_EQ(dupcheck(position), "DUPLICATE: a1b1 (indices 3 and 6)\n"
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

TEST(Illegalcheck, FindsNothingInASoundProgram) {
    const std::string sound = "No illegal moves found among move_is_legal=true set.\n";
    for_random_positions(10000, 82, [&](Position& position) {
        const Key key = position.key;
        ASSERT_EQ(joined(output_of([&] { cmd_illegalcheck(position); })), sound);
        ASSERT_EQ(position.key, key);
    });
}

} // namespace
} // namespace brindlemoth
