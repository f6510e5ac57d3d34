// Whole searches, by what they print and leave behind.
#include "board/fen.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "search/root.h"
#include "search/transposition.h"
#include "support/captured_output.h"
#include "support/support.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <regex>

using namespace brindlemoth;

class Root : public testing::Test {
protected:
    void SetUp() override {
        tt_resize(1);
        clear_search_memory();
        multipv_count = 1;
    }
    void TearDown() override { SetUp(); }
};

static Lines searched(Position& position, int depth) {
    SearchLimits limits{};
    limits.depth = depth;
    return output_of([&] { search_root(position, limits); });
}

static bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Every search prints info lines of one form, one for each line and iteration, and then one
// bestmove line. The moves of each info line can be played. The position does not change.
TEST_F(Root, EverySearchOfRandomPositionsIsWellFormed) {
    const std::regex form(
        "info depth ([1-4]) seldepth [0-9]+( multipv [1-3])? score (cp -?[0-9]+|mate -?[1-9][0-9]*)"
        " nodes [0-9]+ nps [0-9]+ time [0-9]+ pv((?: [a-h][1-8][a-h][1-8][nbrq]?)+)");
    for_random_positions(200, 71, [&](Position& position) {
        const Position before = position;
        multipv_count = position.undo_count % 3 + 1;
        const Lines lines = searched(position, 4);
        ASSERT_TRUE(same_position(position, before));
        MoveList legal;
        generate_legal(position, legal);
        ASSERT_FALSE(lines.empty());
        if (legal.count == 0) {
            ASSERT_EQ(joined(lines), "bestmove 0000\n");
            return;
        }
        if (lines.size() == 1) { // a draw on entry
            ASSERT_EQ(lines[0], std::string("bestmove ") + move_to_text(legal.moves[0]));
            return;
        }
        ASSERT_EQ(lines.back(), std::string("bestmove ") + move_to_text(root_lines[0].move));
        const int line_count = std::min(multipv_count, legal.count);
        ASSERT_EQ(lines.size(), static_cast<std::size_t>(4 * line_count + 1));
        for (int i = 0; i < 4 * line_count; ++i) {
            const std::string& text = lines[static_cast<std::size_t>(i)];
            std::smatch match;
            ASSERT_TRUE(std::regex_match(text, match, form)) << text;
            ASSERT_EQ(match[1], std::to_string(i / line_count + 1));
            ASSERT_EQ(match[2],
                      multipv_count == 1 ? "" : " multipv " + std::to_string(i % line_count + 1));
            Position line = position;
            std::istringstream moves(match[4]);
            for (std::string word; moves >> word;) {
                const Move move = legal_move(line, word);
                ASSERT_NE(move, MOVE_NONE) << text;
                make_move(line, move);
            }
        }
    });
}

TEST_F(Root, MatesAndDrawsOnEntry) {
    const struct {
        const char* fen;
        int depth;
        const char *score, *best; // no score where there is no info line
    } ROWS[] = {{"6k1/5ppp/8/8/8/8/8/R3K3 w - - 0 1", 2, "mate 1 ", "a1a8"},
                {"7k/8/8/8/8/8/R7/1R2K3 w - - 0 1", 4, "mate 2 ", "b1b7"},
                {"7k/R7/8/8/8/8/8/1R2K3 b - - 0 1", 3, "mate -1 ", "h8g8"},
                {"4k3/8/8/8/8/8/8/4K2R w K - 100 1", 5, "", "h1f1"},
                // A tree that the fifty-move rule ends after one ply, deepened as far as it goes.
                {"4k3/8/8/8/8/8/8/4K3 w - - 99 1", 128, "depth 127 seldepth 1 ", "e1d1"},
                {"4k3/8/8/8/8/8/8/4K3 w - - 99 1", INT_MAX, "depth 127 seldepth 1 ", "e1d1"}};
    for (const auto& row : ROWS) {
        SetUp();
        Position position = position_from(row.fen);
        const Lines lines = searched(position, row.depth);
        EXPECT_EQ(lines.back(), std::string("bestmove ") + row.best) << row.fen;
        EXPECT_EQ(lines.size(), *row.score == '\0' ? 1U : std::size_t(std::min(row.depth, 127)) + 1)
            << row.fen;
        EXPECT_TRUE(contains(lines.front() + joined(lines), row.score)) << row.fen;
    }
}

// Each search of a game depends on the transposition table, the history tables and the repetitions
// that the searches before it left. The sums are fixed like the node totals of bench.
TEST_F(Root, GamesAddUp) {
    const struct {
        int lines;
        std::uint64_t nodes;
        int seldepths, scores, moves; // of the first lines
    } ROWS[] = {
        {1, 60697, 2453, 53, 1307}, {2, 157498, 2631, 196, 1277}, {3, 211371, 2567, 1126, 1299}};
    for (const auto& row : ROWS) {
        SetUp();
        multipv_count = row.lines;
        Position position = position_from(starting_fen);
        std::uint64_t nodes = 0;
        int seldepths = 0, scores = 0, moves = 0;
        for (int ply = 1; ply <= 20; ++ply) {
            searched(position, 6);
            nodes += node_count;
            seldepths += ply * sel_depth;
            scores += ply * root_lines[0].score;
            moves += ply * root_lines[0].pv_length;
            make_move(position, root_lines[0].move);
        }
        EXPECT_EQ(nodes, row.nodes) << row.lines;
        EXPECT_EQ(seldepths, row.seldepths) << row.lines;
        EXPECT_EQ(scores, row.scores) << row.lines;
        EXPECT_EQ(moves, row.moves) << row.lines;
    }
}

TEST_F(Root, InfoLine) {
    const struct {
        int score;
        const char* text;
    } ROWS[] = {{0, "cp 0"},           {-29999, "cp -29999"},      {30000, "mate 500"},
                {-30000, "mate -500"}, {30997, "mate 2"},          {-30996, "mate -2"},
                {-31000, "mate 0"},    {-TB_WIN_SCORE, "mate -65"}};
    const Move pv[] = {make_move_code(A7, A8, FLAG_PROMOTION + 1), MOVE_NULL,
                       make_move_code(E1, G1, FLAG_SHORT_CASTLING)};
    for (const int lines : {1, 2}) {
        multipv_count = lines;
        node_count = 18446744073709551615ULL;
        sel_depth = 33;
        for (const auto& row : ROWS)
            EXPECT_EQ(without_timing(output_of([&] { print_info(12, 4, row.score, pv, 3); })[0]),
                      std::string("info depth 12 seldepth 33") + (lines > 1 ? " multipv 5" : "") +
                          " score " + row.text + " nodes 18446744073709551615 pv a7a8b 0000 e1g1");
    }
    // The longest line there can be.
    Move longest[MAX_PLY];
    std::fill_n(longest, MAX_PLY, make_move_code(H7, H8, FLAG_PROMOTION + 3));
    multipv_count = 256;
    const std::string line =
        output_of([&] { print_info(127, 255, -TB_WIN_SCORE, longest, MAX_PLY); })[0];
    EXPECT_EQ(line.size() - line.find(" pv"), 3 + 6 * std::size_t{MAX_PLY});
}

TEST_F(Root, CrowdedPositionsAreSearchedToTheEndWithoutATable) {
    multipv_count = 300;
    tt_release();
    for (const char* const fen :
         {"QQQQQQQQ/8/Q6Q/Q6Q/Q6Q/Q6Q/8/QQQQKQQk w - - 0 1",
          "KQ6/8/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQ2k w - - 0 1",
          "kkkkkkkk/kkkkkkkk/8/8/8/8/KKKKKKKK/KKKKKKKK b KQkq - 0 1"}) {
        Position position = position_from(fen);
        const Position before = position;
        EXPECT_TRUE(searched(position, 4).back().starts_with("bestmove ")) << fen;
        EXPECT_TRUE(same_position(position, before)) << fen;
    }
}
