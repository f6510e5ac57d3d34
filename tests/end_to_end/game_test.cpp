// A whole game of the engine against itself, refereed by the test.
#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/engine_process.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// Neither side can ever mate: bare kings, or one knight or bishop between them.
bool is_dead(const Position& position) {
    int minors = 0;
    for (const int colour : {WHITE, BLACK}) {
        const Bitboard* const own = position.pieces[colour];
        if ((own[PAWN] | own[ROOK] | own[QUEEN]) != 0)
            return false;
        minors += popcount(own[KNIGHT] | own[BISHOP]);
    }
    return minors <= 1;
}

// How the game has ended by the rules, or an empty text while it goes on.
std::string result(const Position& position, const std::vector<Key>& keys) {
    MoveList legal;
    Position copy = position;
    generate_legal(copy, legal);
    if (legal.count == 0)
        return in_check(position) ? "mate" : "stalemate";
    if (position.halfmove >= 100)
        return "fifty moves";
    if (std::count(keys.begin(), keys.end(), position.key) >= 3)
        return "repetition";
    return is_dead(position) ? "dead position" : "";
}

// Plays on from the position that the command sets until the game has ended, each move checked.
void play_game(const std::string& position_command, Position position) {
    constexpr std::size_t LONGEST_LINE = 4000; // what the engine reads as one line
    EngineProcess engine;
    std::string moves;
    std::vector<Key> keys = {position.key};
    std::string end = result(position, keys);
    while (end.empty()) {
        const std::string line = position_command + " moves" + moves;
        ASSERT_LT(line.size(), LONGEST_LINE) << "the game does not end: " << line;
        engine.send(line);
        engine.send("go movetime 50");
        const std::vector<std::string> lines = engine.read_until("bestmove ");
        ASSERT_FALSE(lines.empty());
        const std::string text = lines.back().substr(std::string("bestmove ").size());
        const Move move = legal_move(position, text);
        ASSERT_NE(move, MOVE_NONE) << "illegal: " << text << " after" << moves;
        make_move(position, move);
        keys.push_back(position.key);
        moves += " " + text;
        end = result(position, keys);
    }
    testing::Test::RecordProperty("end", end);
    testing::Test::RecordProperty("plies", static_cast<int>(keys.size()) - 1);
    // The engine takes the game to have ended in the same way where it has no move to give.
    engine.send(position_command + " moves" + moves);
    engine.send("go depth 1");
    const std::vector<std::string> lines = engine.read_until("bestmove ");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back() == "bestmove 0000", end == "mate" || end == "stalemate") << end;
    EXPECT_TRUE(engine.finish().empty());
}

TEST(Game, WholeGameEndsByTheRules) {
    play_game("position startpos", position_from(starting_fen));
}

} // namespace
} // namespace brindlemoth
