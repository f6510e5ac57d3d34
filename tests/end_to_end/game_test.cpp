// A whole game of the engine against itself by the clock, refereed by the test.
#include "board/fen.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/engine_process.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace brindlemoth;

TEST(Game, WholeGameEndsByTheRules) {
    constexpr std::size_t LONGEST_LINE = 4000; // what the engine reads as one line
    EngineProcess engine;
    Position position = position_from(starting_fen);
    std::string line = "position startpos moves";
    std::vector<Key> keys = {position.key};
    MoveList legal;
    do {
        ASSERT_LT(line.size(), LONGEST_LINE) << "the game does not end: " << line;
        engine.send(line);
        engine.send("go movetime 30");
        const Lines answer = engine.read_until("bestmove ");
        const std::string text = answer.back().substr(std::string("bestmove ").size());
        const Move move = legal_move(position, text);
        ASSERT_NE(move, MOVE_NONE) << "illegal: " << text << " after " << line;
        make_move(position, move);
        keys.push_back(position.key);
        line += " " + text;
        generate_legal(position, legal);
    } while (legal.count > 0 && position.halfmove < 100 &&
             std::count(keys.begin(), keys.end(), position.key) < 3);
    EXPECT_EQ(engine.finish(), Lines());
}
