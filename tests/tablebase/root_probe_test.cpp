// The move that the tables choose at the root, and how `go` tells it.

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

namespace brindlemoth {

namespace {

struct RootProbe : testing::Test {
    void SetUp() override {
        SKIP_WITHOUT_TABLES();
        syzygy_init(syzygy_directory().c_str());
    }
    void TearDown() override { syzygy_init(""); }
};

int distance_after(const Position& root, Move move, int root_dtz) {
    Position position = root;
    make_move(position, move);
    const ProbeBoard board = board_of(position);
    int success;
    if (root_dtz > 0 && board_is_mate(board))
        return 1;
    if (position.halfmove == 0) {
        const int wdl = -syzygy_wdl(board, success);
        EXPECT_NE(success, PROBE_FAILED);
        return wdl == 0 ? 0 : (wdl > 0 ? 1 : -1) * (wdl == 2 || wdl == -2 ? 1 : 101);
    }
    const int dtz = -syzygy_dtz(board, success);
    EXPECT_NE(success, PROBE_FAILED);
    return dtz + (dtz > 0) - (dtz < 0);
}

using Lines = std::vector<std::string>;

Lines ask(EngineProcess& engine, const std::string& position, const std::string& go = "go") {
    engine.send("position fen " + position);
    engine.send(go);
    return engine.read_until("bestmove");
}

Lines table_answer(const std::string& move) {
    return {"info depth 1 seldepth 1 score cp 0 nodes 1 tbhits 1 pv " + move, "bestmove " + move};
}

} // namespace

// What a FEN may say and no game can: the move is legal all the same, or there is none.
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
    // The clock has no say, not even where it would wrap.
    Move usual;
    Position rook = position_from("8/8/8/8/8/4k3/8/R3K3 w - - 0 1");
    ASSERT_TRUE(syzygy_root_move(rook, usual));
    for (const int clock : {1, 99, 255, 256, 100000}) {
        Position position = rook;
        position.halfmove = clock;
        Move move;
        ASSERT_TRUE(syzygy_root_move(position, move));
        EXPECT_EQ(move, usual) << clock;
    }
}

TEST_F(RootProbe, KeepsTheValueAndTheDistance) {
    std::mt19937 random(2024);
    const std::vector<std::string> signatures = all_signatures();
    int decided = 0;
    for (int i = 0; i < 10000; ++i) {
        const ProbeBoard board = random_board(signatures[random() % 35], random);
        Position position = position_of(board);
        const Position before = position;
        Move chosen;
        ASSERT_TRUE(syzygy_root_move(position, chosen)) << board_text(board);
        ASSERT_EQ(position.key, before.key);
        const std::vector<Move> moves = moves_in_root_order(position);
        if (moves.empty()) {
            ASSERT_EQ(chosen, MOVE_NONE) << board_text(board);
            continue;
        }
        ++decided;

        int success;
        const int root_dtz = syzygy_dtz(board, success);
        std::vector<int> distances;
        for (const Move move : moves)
            distances.push_back(distance_after(position, move, root_dtz));
        // Of the draws one that the material picks, else the first of the shortest or longest ways.
        const auto draws = std::count(distances.begin(), distances.end(), 0);
        ASSERT_TRUE(root_dtz != 0 || draws > 0) << board_text(board);
        Key skip = draws == 0 ? 0
                              : board_material_key(board, board.white_to_move == 0) %
                                    static_cast<Key>(draws);
        std::size_t expected = moves.size();
        for (std::size_t m = 0; m < moves.size(); ++m) {
            const bool found = expected < moves.size();
            const int distance = distances[m];
            if (root_dtz == 0 ? distance == 0 && !found && skip-- == 0
                              : distance != 0 && (distance > 0) == (root_dtz > 0) &&
                                    (!found || distance < distances[expected]))
                expected = m;
        }
        ASSERT_LT(expected, moves.size()) << board_text(board);
        ASSERT_EQ(chosen, moves[expected]) << board_text(board);

        Position after = position;
        make_move(after, chosen);
        const int wdl = syzygy_wdl(board, success);
        ASSERT_EQ(-syzygy_wdl(board_of(after), success), wdl) << board_text(board);
    }
    EXPECT_GT(decided, 9000);
}

// Each move of the stronger side comes one ply nearer to the mate, and so does every answer.
TEST_F(RootProbe, RookMatesFromEverywhere) {
    int games = 0;
    unsigned number = 0;
    for_all_boards("KRvK", [&](const ProbeBoard& board) {
        int success;
        const int dtz = syzygy_dtz(board, success);
        if (dtz <= 0 || !stands_for_its_images(board))
            return;
        // One move from everywhere, a whole game now and then.
        const int moves = ++number % 97 == 0 ? dtz : 1;
        games += moves > 1 ? 1 : 0;
        Position position = position_of(board);
        for (int ply = 1; ply <= moves; ++ply) {
            Move move;
            ASSERT_TRUE(syzygy_root_move(position, move)) << board_text(board);
            ASSERT_NE(move, MOVE_NONE) << board_text(board);
            make_move(position, move);
            const ProbeBoard next = board_of(position);
            const int left = syzygy_dtz(next, success);
            ASSERT_EQ(board_is_mate(next), ply == dtz) << board_text(board);
            ASSERT_TRUE(ply == dtz || ((ply & 1) != 0 ? -left : left) == dtz - ply)
                << board_text(board);
        }
    });
    EXPECT_GT(games, 200);
}

TEST_F(RootProbe, NoMoveToChoose) {
    EXPECT_EQ(syzygy_root(board_from("k6R/8/1K6/8/8/8/8/8 b - - 0 1")), ROOT_MATED);
    EXPECT_EQ(syzygy_root(board_from("7k/8/6QK/8/8/8/8/8 b - - 0 1")), ROOT_STALEMATE);
    // No table of 6 men; no white king.
    for (const char* const fen :
         {"k7/8/8/8/8/8/8/KQRBN3 w - - 0 1", "k7/8/8/8/8/8/8/R6R w - - 0 1"}) {
        Position position = position_from(fen);
        Move move = MOVE_NULL;
        EXPECT_FALSE(syzygy_root_move(position, move)) << fen;
        EXPECT_EQ(move, MOVE_NONE) << fen;
    }
}

TEST_F(RootProbe, GoAnswersInTwoLines) {
    EngineProcess engine;
    engine.send("setoption name SyzygyPath value " + syzygy_directory());
    EXPECT_EQ(ask(engine, "k7/8/1K6/8/8/8/8/7R w - - 0 1"), table_answer("h1h8"));
    EXPECT_EQ(ask(engine, "k7/8/8/8/8/8/3qQ3/K7 w - - 0 1", "go depth 3"), table_answer("e2d2"));
    EXPECT_EQ(ask(engine, "8/8/1K6/8/1P6/8/8/k7 w - - 30 60", "go infinite"), table_answer("b4b5"));
    EXPECT_EQ(ask(engine, "8/P7/8/8/8/8/7k/K7 w - - 0 1"), table_answer("a7a8q"));
    // A drawn position has the same answer every time.
    const Lines draw = ask(engine, "8/8/8/8/8/2k5/7R/K6r w - - 0 1");
    EXPECT_EQ(ask(engine, "8/8/8/8/8/2k5/7R/K6r w - - 0 1"), draw);
    // Nothing to play, castling rights, too many men: the normal ways.
    EXPECT_EQ(ask(engine, "k6R/8/1K6/8/8/8/8/8 b - - 0 1"), Lines{"bestmove 0000"});
    EXPECT_EQ(ask(engine, "7k/8/6QK/8/8/8/8/8 b - - 0 1"), Lines{"bestmove 0000"});
    EXPECT_NE(ask(engine, "4k3/8/8/8/8/8/8/4K2R w K - 0 1", "go depth 2").front(),
              "info depth 1 seldepth 1 score cp 0 nodes 1 tbhits 1 pv h1h8");
    EXPECT_GT(ask(engine, "4k3/8/8/8/8/8/8/4K2R w K - 0 1", "go depth 3").size(), 2U);
    EXPECT_GT(ask(engine, "4k2r/7p/8/8/8/8/8/4K2R w - - 0 1", "go depth 3").size(), 2U);
    // An empty path and "<empty>" leave the tables in force; a path without tables does not.
    engine.send("setoption name SyzygyPath value <empty>");
    EXPECT_EQ(ask(engine, "k7/8/1K6/8/8/8/8/7R w - - 0 1"), table_answer("h1h8"));
    engine.send("setoption name SyzygyPath value /no/such/place");
    EXPECT_NE(ask(engine, "k7/8/1K6/8/8/8/8/7R w - - 0 1", "go depth 3"), table_answer("h1h8"));
    engine.close_input();
    EXPECT_EQ(engine.wait_for_exit(), 0);
    EXPECT_EQ(engine.errors(), "");
}

TEST_F(RootProbe, RookMatesByGoAlone) {
    EngineProcess engine;
    engine.send("setoption name SyzygyPath value " + syzygy_directory());
    std::mt19937 random(11);
    for (int game = 0; game < 20; ++game) {
        const ProbeBoard board = random_board("KRvK", random);
        int success;
        const int dtz = syzygy_dtz(board, success);
        if (dtz == 0)
            continue;
        // From either side the mate comes on the very ply that the distance says; a lost side that
        // is mated already has the distance -1.
        std::string position = board_text(board) + " moves";
        int plies = 0;
        for (; plies <= 40; ++plies) {
            const Lines lines = ask(engine, position);
            if (lines == Lines{"bestmove 0000"})
                break;
            const std::string move = lines.back().substr(9);
            ASSERT_EQ(lines, table_answer(move));
            position += " " + move;
        }
        EXPECT_TRUE(plies == std::abs(dtz) || (plies == 0 && dtz == -1)) << position;
    }
}

} // namespace brindlemoth
