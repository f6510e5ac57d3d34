// The move that the tables choose at the root, and the answer of `go`.

#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/engine_process.h"
#include "support/support.h"
#include "tablebase/probe.h"
#include "tablebase/root_probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

using namespace brindlemoth;

struct RootProbe : testing::Test {
    void SetUp() override {
        syzygy_init(tables_directory().c_str());
        ASSERT_EQ(syzygy_max_men, 4U);
    }
    void TearDown() override { syzygy_init(""); }
};

static int distance_after(const Position& root, Move move, int root_dtz) {
    Position position = root;
    make_move(position, move);
    const ProbeBoard board = board_of(position);
    int success;
    if (root_dtz > 0 && board_is_mate(board))
        return 1;
    if (position.halfmove == 0)
        return wdl_to_dtz[-syzygy_wdl(board, success) - WDL_LOSS];
    const int dtz = -syzygy_dtz(board, success);
    EXPECT_NE(success, PROBE_FAILED);
    return dtz + (dtz > 0) - (dtz < 0);
}

static Lines ask(EngineProcess& engine, const std::string& position, const std::string& go = "go") {
    engine.send("position fen " + position);
    engine.send(go);
    return engine.read_until("bestmove");
}

static Lines table_answer(const std::string& move) {
    return {"info depth 1 seldepth 1 score cp 0 nodes 1 tbhits 1 pv " + move, "bestmove " + move};
}

// A FEN can have fields that no game reaches. The chosen move is legal, or there is none.
TEST_F(RootProbe, OddFieldsOfAFen) {
    for (const char* const fen : {
             "8/5nK1/3kP3/8/8/8/8/8 w - d7 0 1", // the enemy king stands behind the square
             "8/8/8/4P3/8/8/k6K/8 w - d6 0 1",   // no pawn there
             "8/8/3N4/4P3/8/8/k6K/8 w - d6 0 1", // a man on the square
             "8/8/8/3rP3/8/8/k6K/8 w - d6 0 1",  // a rook behind it
             "8/8/8/8/8/8/kp5K/8 b - a1 0 1",    // the square whose number is 0
             "8/8/8/3pP3/8/8/k6K/8 w - d6 0 1",  // a true one
         }) {
        Position position = position_from(fen);
        Move move;
        ASSERT_TRUE(syzygy_root_move(position, move)) << fen;
        const std::vector<Move> moves = moves_in_root_order(position);
        EXPECT_EQ(std::count(moves.begin(), moves.end(), move), 1) << fen << move_to_text(move);
    }
    // No table of 6 men; no white king; a pawn where none can be.
    for (const char* const fen : {"k7/8/8/8/8/8/8/KQRBN3 w - - 0 1", "k7/8/8/8/8/8/8/R6R w - - 0 1",
                                  "8/8/8/4k3/8/8/8/KP6 w - - 0 1"}) {
        int success;
        syzygy_wdl(board_from(fen), success);
        EXPECT_EQ(success, PROBE_FAILED) << fen;
        Position position = position_from(fen);
        Move move = MOVE_NULL;
        EXPECT_FALSE(syzygy_root_move(position, move)) << fen;
        EXPECT_EQ(move, MOVE_NONE) << fen;
    }
}

// A draw is chosen by the material key. Otherwise the first move with the shortest or longest
// distance is chosen. The clock has no influence, not even where it would wrap to 0.
TEST_F(RootProbe, KeepsTheValueAndTheDistance) {
    const auto sign = [](int distance) { return (distance > 0) - (distance < 0); };
    std::mt19937 random(2024);
    const std::vector<std::string> signatures = all_signatures();
    for (int i = 0; i < 10000; ++i) {
        const ProbeBoard board = random_board(signatures[random() % 35], random);
        Position position = position_from(board_text(board));
        position.halfmove = i;
        const Position before = position;
        Move chosen;
        ASSERT_TRUE(syzygy_root_move(position, chosen)) << board_text(board);
        ASSERT_TRUE(same_position(position, before));
        const std::vector<Move> moves = moves_in_root_order(position);
        int success;
        const int root_dtz = syzygy_dtz(board, success);
        std::vector<Move> fitting;
        int shortest = 0;
        for (const Move move : moves) {
            const int distance = distance_after(position, move, root_dtz);
            if (sign(distance) != sign(root_dtz))
                continue;
            if (fitting.empty() || distance < shortest) {
                fitting.clear();
                shortest = distance;
            }
            if (distance == 0 || fitting.empty())
                fitting.push_back(move);
        }
        ASSERT_EQ(fitting.empty(), moves.empty()) << board_text(board);
        const Key pick = root_dtz == 0 ? board_material_key(board, board.white_to_move == 0) : 0;
        ASSERT_EQ(chosen, moves.empty() ? MOVE_NONE : fitting[pick % fitting.size()])
            << board_text(board);
    }
}

TEST_F(RootProbe, GoAnswersInTwoLines) {
    EngineProcess engine;
    engine.send("setoption name SyzygyPath value " + tables_directory());
    const struct {
        const char* fen;
        const char* move;
        const char* go = "go";
    } rows[] = {
        {"k7/8/1K6/8/8/8/8/7R w - - 0 1", "h1h8"},
        {"k7/8/8/8/8/8/3qQ3/K7 w - - 0 1", "e2d2", "go depth 3"},
        {"8/8/1K6/8/1P6/8/8/k7 w - - 30 60", "b4b5", "go infinite"},
        {"8/P7/8/8/8/8/7k/K7 w - - 0 1", "a7a8q"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ask(engine, row.fen, row.go), table_answer(row.move));
    // Nothing to play, castling rights, too many men: the normal ways.
    for (const char* const fen : {"k6R/8/1K6/8/8/8/8/8 b - - 0 1", "7k/8/6QK/8/8/8/8/8 b - - 0 1"})
        EXPECT_EQ(ask(engine, fen), Lines{"bestmove 0000"});
    for (const char* const fen :
         {"4k3/8/8/8/8/8/8/4K2R w K - 0 1", "4k2r/7p/8/8/8/8/8/4K2R w - - 0 1"})
        EXPECT_GT(ask(engine, fen, "go depth 3").size(), 2U);
    // An empty path and "<empty>" leave the tables in force; a path without tables does not.
    engine.send("setoption name SyzygyPath value <empty>");
    EXPECT_EQ(ask(engine, rows[0].fen), table_answer("h1h8"));
    engine.send("setoption name SyzygyPath value /no/such/place");
    EXPECT_GT(ask(engine, rows[0].fen, "go depth 3").size(), 2U);
    EXPECT_TRUE(engine.finish().empty());
}
