// Tables as a front end meets them: the path, the two lines of a root answer, a mate by tables
// alone.

#include "support/engine_process.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

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

TEST(EngineTables, RootAnswersInTwoLines) {
    SKIP_WITHOUT_TABLES();
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

TEST(EngineTables, RookMatesByGoAlone) {
    SKIP_WITHOUT_TABLES();
    syzygy_init(syzygy_directory().c_str());
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
    syzygy_init("");
}

} // namespace brindlemoth
