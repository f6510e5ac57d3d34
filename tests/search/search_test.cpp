// Single nodes of the recursive search.
#include "board/make_move.h"
#include "eval/evaluate.h"
#include "movegen/legality.h"
#include "search/search.h"
#include "search/transposition.h"
#include "support/book_file.h"
#include "support/support.h"
#include "tablebase/syzygy.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace brindlemoth;
using namespace std::string_literals;

class Search : public testing::Test {
protected:
    void SetUp() override {
        tt_resize(1);
        clear_search_memory();
        std::memset(static_cast<void*>(frames), 0, sizeof frames);
        begin_search({}, WHITE);
    }
    void TearDown() override { SetUp(); }

    SearchFrame* frame(int ply) { return frames + 2 + ply; }
    int at(Position& position, int depth, int alpha, int beta, int ply) {
        return search(position, frame(ply), depth, alpha, beta, beta - alpha > 1, ply);
    }

    SearchFrame frames[MAX_PLY + 4];
};

constexpr int FULL = SCORE_INFINITE;

TEST_F(Search, NodesWithoutMovesAndDraws) {
    const char* const mated = "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1";
    const char* const stalemated = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1";
    const struct {
        const char* fen;
        int depth, ply, score;
    } ROWS[] = {{mated, 1, 0, -31000},
                {mated, 3, 7, -30993},
                {stalemated, 5, 3, DRAW_SCORE},
                {"8/8/8/8/8/8/8/8 w - - 0 1", 3, 4, DRAW_SCORE},
                // The fifty-move rule is tested before mate.
                {"7k/6Q1/6K1/8/8/8/8/8 b - - 100 1", 2, 1, DRAW_SCORE},
                {"7k/6Q1/6K1/8/8/8/8/8 b - - 99 1", 2, 1, -30999},
                {"7k/8/6K1/5Q2/8/8/8/8 w - - 2147483647 1", 2, 1, DRAW_SCORE}};
    for (const auto& row : ROWS) {
        Position position = position_from(row.fen);
        EXPECT_EQ(at(position, row.depth, -FULL, FULL, row.ply), row.score) << row.fen;
        EXPECT_EQ(frame(row.ply)->pv_length, 0) << row.fen;
        EXPECT_EQ(tt_probe(position.key), nullptr) << row.fen;
    }
}

TEST_F(Search, RepetitionIsADrawOnEntry) {
    constexpr Move KNIGHTS[] = {
        make_move_code(G1, F3, FLAG_QUIET), make_move_code(G8, F6, FLAG_QUIET),
        make_move_code(F3, G1, FLAG_QUIET), make_move_code(F6, G8, FLAG_QUIET)};
    // By halfmove clock of the start: positions before the clock are not compared.
    for (const int clock : {0, 50, -4}) {
        Position position =
            position_from("rnbqkbnr/1ppppppp/8/p7/8/P7/1PPPPPPP/RNBQKBNR w KQkq - 0 1");
        position.halfmove = clock;
        for (int i = 0; i < 5; ++i) {
            begin_search({}, WHITE);
            const int score = at(position, 1, -FULL, FULL, 0);
            EXPECT_EQ(node_count == 1 && score == DRAW_SCORE, i == 4 && clock >= 0) << i;
            make_move(position, KNIGHTS[i % 4]);
        }
    }
}

// A node whose legal moves were all excluded or pruned is no mate and no stalemate: it returns
// alpha.
TEST_F(Search, ANodeWithoutSearchedMovesReturnsAlpha) {
    const struct {
        const char* fen;
        int score;
    } ROWS[] = {
        {"7k/8/8/8/8/7r/8/6BK w - - 0 1", -123}, // in check
        {"k7/8/8/8/8/8/1r6/7K w - - 0 1", -123},
        {"7k/8/8/8/8/8/5q2/7K w - - 0 1", DRAW_SCORE}, // no legal move to exclude
    };
    for (const auto& row : ROWS) {
        Position position = position_from(row.fen);
        MoveList legal;
        generate_legal(position, legal);
        root_excluded_count = legal.count;
        std::copy_n(legal.moves, legal.count, root_excluded);
        EXPECT_EQ(at(position, 2, -123, 500, 0), row.score) << row.fen;
        EXPECT_EQ(tt_probe(position.key), nullptr) << row.fen;
    }
    // Futility prunes every move.
    Position position = position_from("k7/8/8/8/8/8/8/6RK w - - 0 1");
    begin_search({}, WHITE);
    const int value = evaluate(position);
    EXPECT_EQ(at(position, 3, value + 525, value + 526, 0), value + 525);
    EXPECT_EQ(tt_probe(position.key), nullptr);
}

// A table that gives each position the same value, for either side to move.
TEST_F(Search, WinsThatTheFiftyMoveRuleEndsAreWorthOnePoint) {
    constexpr std::string_view HEAD("\x71\xE8\x23\x5D\x01\x00\x44\x66\xEE\x00", 10);
    constexpr std::size_t FILE_SIZE = 80;
    const struct {
        char value; // 0 is a loss, 4 a win
        int score;
    } ROWS[] = {{1, -1}, {2, DRAW_SCORE}, {3, 1}};
    const TemporaryDirectory directory;
    for (const auto& row : ROWS) {
        const char constant[] = {'\x80', row.value};
        std::string file(HEAD);
        file.append(constant, 2).append(constant, 2).resize(FILE_SIZE);
        directory.write("KRvK.rtbw", file);
        ASSERT_TRUE(syzygy_init(directory.path.c_str()));
        syzygy_probe_limit = 3;
        for (const char* const side : {"w", "b"}) {
            Position position = position_from("8/8/8/4k3/8/8/8/R3K3 "s + side);
            EXPECT_EQ(at(position, 1, 0, 1, 10), row.score) << side;
            ASSERT_NE(tt_probe(position.key), nullptr);
            EXPECT_EQ(tt_probe(position.key)->bound, BOUND_EXACT);
        }
        syzygy_init("");
        tt_clear();
    }
    syzygy_probe_limit = 0;
}

TEST_F(Search, TheLastPlyIsEvaluated) {
    Position position = position_from("4k3/8/8/3p4/8/8/8/3RK3 w - - 100 1");
    const int value = evaluate(position);
    for (const int depth : {0, 1, 20}) {
        EXPECT_EQ(at(position, depth, -FULL, FULL, MAX_PLY), value) << depth;
        EXPECT_EQ(quiescence(position, frame(MAX_PLY), -FULL, FULL, MAX_PLY), value);
        EXPECT_EQ(node_count, 2U);
        begin_search({}, WHITE);
    }
    // One ply earlier the capture is searched, and the node after it is counted.
    const int gain = quiescence(position, frame(MAX_PLY - 1), -FULL, FULL, MAX_PLY - 1);
    EXPECT_GT(gain, value);
    EXPECT_EQ(node_count, 2U);
    EXPECT_EQ(sel_depth, MAX_PLY);
}
