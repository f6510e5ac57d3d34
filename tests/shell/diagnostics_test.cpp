#include "board/bitboard.h"
#include "board/fen.h"
#include "eval/evaluate.h"
#include "search/root.h"
#include "search/transposition.h"
#include "shell/diagnostics.h"
#include "support/captured_output.h"
#include "support/support.h"

#include <gtest/gtest.h>
#include <regex>

using namespace brindlemoth;

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

// The signature of the program: the rules of evaluation and search fix these totals. A change
// that is to make it faster keeps them; one that is to make it stronger measures them anew.
TEST_F(Bench, Signature) {
    const struct {
        int depth;
        const char* nodes[2]; // by style
    } ROWS[] = {{1, {"667", "734"}},
                {3, {"3083", "2398"}},
                {6, {"22543", "24667"}},
                {8, {"103560", "108748"}}};
    for (const auto& row : ROWS) {
        for (const int style : {0, 1}) {
            set_style(style);
            const Lines lines = output_of([&] { cmd_bench(row.depth); });
            ASSERT_GE(lines.size(), 6U);
            EXPECT_TRUE(std::regex_match(
                joined({lines.end() - 6, lines.end()}),
                std::regex("\n=== Bench ===\nDepth   : " + std::to_string(row.depth) +
                           "\nNodes   : " + row.nodes[style] +
                           "\nTime    : [0-9]+ ms\nNPS     : [0-9]+\n")))
                << joined(lines);
        }
    }
}

TEST(PrintBoard, ShowsThePointsAndTheStateLines) {
    const std::string text = joined(
        output_of([&] { print_board(position_from("4k2r/8/8/8/4P3/8/8/R3K3 b Qk e3 9 1")); }));
    const std::string rule = "\n  +---+---+---+---+---+---+---+---+\n";
    EXPECT_EQ(text.find(rule + "8 | . | . | . | . | k | . | . | r |" + rule), 0U);
    EXPECT_NE(text.find("    a   b   c   d   e   f   g   h\n\nSide: black\nCastling: Qk\n"
                        "EP square: e3\n50-move: 9, Hash: "),
              std::string::npos);
}

TEST(Perft, DivideListsEachLegalMove) {
    Position position = position_from(starting_fen);
    const std::string text = joined(output_of([&] { perft_divide(position, 2); }));
    EXPECT_EQ(text.find("a2a3: 20\nb2b3: 20\n"), 0U);
    EXPECT_NE(text.find("\ng1h3: 20\nTotal: 400\n"), std::string::npos);
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
