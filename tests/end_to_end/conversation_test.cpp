// The conversation at the prompt, where no search runs: what is a command, what is a line, how the
// program starts and ends.
#include "support/engine_process.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brindlemoth {
namespace {

using Lines = std::vector<std::string>;

const Lines UCI_BLOCK = {
    "id name Brindlemoth",
    "id author You",
    "option name Hash type spin default 64 min 1 max 2048",
    "option name Threads type spin default 1 min 1 max 1",
    "option name MultiPV type spin default 1 min 1 max 256",
    "option name OwnBook type check default false",
    "option name BookFile type string default champions.bin",
    "option name Style type combo default PeSTO var PeSTO var Linear",
    "option name SyzygyPath type string default <empty>",
    "uciok",
};

// All that a fresh engine prints for this input, which it gets in one piece. It must end well.
Lines answer(const std::string& text, const Lines& arguments = {}) {
    EngineProcess engine(arguments);
    engine.send_text(text);
    engine.close_input();
    Lines lines = engine.read_to_end();
    EXPECT_EQ(engine.wait_for_exit(), 0) << text;
    EXPECT_EQ(engine.errors(), "") << text;
    return lines;
}

// What a running engine prints for one line that starts no search.
Lines reply(EngineProcess& engine, const std::string& line) {
    engine.send(line);
    engine.send("isready");
    Lines lines = engine.read_until("readyok");
    if (!lines.empty()) {
        lines.pop_back();
    }
    return lines;
}

// The lines of a search without the parts that depend on the clock.
Lines search(EngineProcess& engine, const std::string& go_line) {
    engine.send(go_line);
    Lines lines = engine.read_until("bestmove");
    for (std::string& line : lines) {
        if (const auto from = line.find(" nps "); from != std::string::npos) {
            line.erase(from, line.find(" pv ") - from);
        }
    }
    return lines;
}

bool contains(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

int count_beginning(const Lines& lines, const std::string& prefix) {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.starts_with(prefix);
    }));
}

TEST(Conversation, EachLineMeetsItsCommandOrSilence) {
    const struct {
        std::string line;
        std::string last_reply; // empty: no reply at all
    } rows[] = {
        {"uci", "uciok"},
        {"uci\r", "uciok"},
        {"uci\r\r", "uciok"},
        {"uci ", ""},
        {" uci", ""},
        {"uci\t", ""},
        {"u\rci", ""},
        {"UCI", ""},
        {"ucix", ""},
        {"", ""},
        {"\r", ""},
        {" ", ""},
        {"isready ", ""},
        {"isreadyy", ""},
        {"stop", ""},
        {"stopp", ""},
        {"quit ", ""},
        {"Quit", ""},
        {"quitnow", ""},
        {"ponderhit", ""},
        {"position", ""},
        {"position nonsense", ""},
        {"setoption", ""},
        {"setoption name Threads value 8", ""},
        {"d ", ""},
        {"dd", ""},
        {"D", ""},
        {"perft", "Total: 20"},
        {"perft 2", "Total: 400"},
        {"perft2", "Total: 400"},
        {"perft +2x", "Total: 400"},
        {"perft -3", "Total: 20"},
        {"perft 4294967298", "Total: 400"},
        {"perfttest ", "Total: 20"}, // no whole line, so it is a perft without a number
        {"perftest", "Total: 20"},
        {" perft 2", ""},
        {"per", ""},
        {"dupcheck", "Total pseudo-legal: 20, Duplicates: 0"},
        {"dupcheck ", ""},
        {"illegalcheck", "No illegal moves found among move_is_legal=true set."},
        {"illegalcheckx", ""},
        {"eval ", ""},
        {"evaluate", ""},
    };
    EngineProcess engine;
    for (const auto& row : rows) {
        const Lines lines = reply(engine, row.line);
        EXPECT_EQ(lines.empty() ? "" : lines.back(), row.last_reply) << '"' << row.line << '"';
    }
    EXPECT_EQ(reply(engine, "uci"), UCI_BLOCK);
    EXPECT_TRUE(contains(reply(engine, "d"), "Side: white"));
    EXPECT_GT(reply(engine, "eval").size(), 3U);

    // Anything that begins like these is that command.
    EXPECT_EQ(search(engine, "gobble depth 2").size(), 3U);
    EXPECT_EQ(search(engine, "godepth 2").size(), 3U);
    EXPECT_EQ(reply(engine, "positionstartpos moves e2e4"), Lines());
    EXPECT_TRUE(contains(reply(engine, "d"), "Side: black"));
    EXPECT_EQ(reply(engine, "ucinewgame "), Lines()); // no command, so the position stays
    EXPECT_TRUE(contains(reply(engine, "d"), "Side: black"));
    EXPECT_EQ(reply(engine, "ucinewgame"), Lines());
    EXPECT_TRUE(contains(reply(engine, "d"), "Side: white"));
    EXPECT_EQ(reply(engine, "setoptions name MultiPV value 2"), Lines());
    EXPECT_EQ(search(engine, "go depth 1").size(), 3U);
    engine.send("quit");
    EXPECT_EQ(engine.read_to_end(), Lines());
    EXPECT_EQ(engine.wait_for_exit(), 0);
}

TEST(Conversation, BenchReadsItsDepthLikeAnyNumber) {
    const struct {
        std::string line;
        Lines summary;
    } rows[] = {
        {"bench1", {"Depth   : 1", "Nodes   : 667"}},
        {"bench 2", {"Depth   : 2", "Nodes   : 1535"}},
        {"bench  3 9", {"Depth   : 3", "Nodes   : 3083"}},
    };
    EngineProcess engine;
    for (const auto& row : rows) {
        engine.send(row.line);
        const Lines lines = engine.read_until("NPS     : ");
        EXPECT_EQ(count_beginning(lines, "bestmove"), 5) << row.line;
        for (const std::string& line : row.summary) {
            EXPECT_TRUE(contains(lines, line)) << row.line << ": " << line;
        }
    }
}

TEST(Conversation, LongLinesArriveInPieces) {
    constexpr std::size_t PIECE = 4095;
    const auto filler = [](std::size_t length) { return std::string(length, 'x'); };
    EXPECT_EQ(answer(filler(PIECE) + "isready\n"), Lines{"readyok"});
    EXPECT_EQ(answer(filler(PIECE - 1) + "isready\n"), Lines());
    EXPECT_EQ(answer(filler(PIECE + 1) + "isready\n"), Lines());
    EXPECT_EQ(answer(filler(2 * PIECE) + "isready\n"), Lines{"readyok"});
    EXPECT_EQ(answer(filler(PIECE) + "\nisready\n"), Lines{"readyok"});
    EXPECT_EQ(answer(filler(100'000) + "\nisready\n"), Lines{"readyok"});

    // A game that is longer than a line is played as far as the first piece reaches: 24
    // characters, then five for each move.
    std::string game = "position startpos moves ";
    for (int i = 0; i < 220; ++i) {
        game += "g1f3 g8f6 f3g1 f6g8 ";
    }
    const Lines board = answer(game + "\nd\n");
    ASSERT_FALSE(board.empty());
    EXPECT_TRUE(board.back().starts_with("50-move: 814,")) << board.back();
}

TEST(Conversation, InputEndsWellWherever) {
    EXPECT_EQ(answer(""), Lines());
    EXPECT_EQ(answer("isready"), Lines{"readyok"}) << "the last line needs no line feed";
    EXPECT_EQ(answer("isready\r"), Lines{"readyok"});
    EXPECT_EQ(answer("isready\nquit\nisready\n"), Lines{"readyok"});
    EXPECT_EQ(answer("isready\nquit"), Lines{"readyok"});
    using namespace std::string_literals;
    EXPECT_EQ(answer("isready\0junk\n\0isready\nperft\0 3"s).size(), 1U + 20U + 1U)
        << "a line that holds a NUL byte ends there";
}

TEST(Conversation, OtherArgumentsEnterTheLoop) {
    for (const Lines& arguments :
         {Lines{""}, Lines{"Bench", "1"}, Lines{"x", "bench", "1"}, Lines{"perfttests"}}) {
        EXPECT_EQ(answer("isready\n", arguments), Lines{"readyok"}) << arguments[0];
    }
}

TEST(Conversation, BenchFromTheCommandLine) {
    const struct {
        Lines arguments;
        Lines summary;
    } rows[] = {
        {{"bench", "5", "7"}, {"Depth   : 5", "Nodes   : 12533"}},
        {{"bench", "4x"}, {"Depth   : 4", "Nodes   : 6618"}},
        {{"bench"}, {"Depth   : 10", "Nodes   : 287510"}},
        {{"bench", "0"}, {"Depth   : 10", "Nodes   : 287510"}},
        {{"bench", "-3"}, {"Depth   : 10", "Nodes   : 287510"}},
        {{"bench", "abc"}, {"Depth   : 10", "Nodes   : 287510"}},
    };
    for (const auto& row : rows) {
        // The board is not printed: the command loop is never entered.
        const Lines lines = answer("d\n", row.arguments);
        EXPECT_EQ(count_beginning(lines, "bestmove"), 5);
        EXPECT_EQ(count_beginning(lines, "Side:"), 0);
        for (const std::string& line : row.summary) {
            EXPECT_TRUE(contains(lines, line)) << row.arguments.size() << ": " << line;
        }
        ASSERT_GE(lines.size(), 5U);
        EXPECT_TRUE(lines.back().starts_with("NPS     : "));
        EXPECT_EQ(lines[lines.size() - 5], "=== Bench ===");
    }
}

TEST(Conversation, NewGameForgetsWhatSearchesLearned) {
    EngineProcess engine;
    const Lines first = search(engine, "go depth 7");
    EXPECT_NE(search(engine, "go depth 7"), first) << "the table is still warm";
    engine.send("position startpos moves e2e4");
    engine.send("ucinewgame");
    EXPECT_EQ(search(engine, "go depth 7"), first);
}

TEST(Conversation, GoLeavesThePositionAsItWas) {
    EngineProcess engine;
    engine.send("position startpos moves e2e4 e7e5 g1f3");
    const Lines before = reply(engine, "d");
    search(engine, "go depth 5");
    EXPECT_EQ(reply(engine, "d"), before);
}

TEST(Conversation, GoReadsItsWords) {
    EngineProcess engine;
    const auto depth_reached = [&](const std::string& go_line) {
        const Lines lines = search(engine, go_line);
        return lines.size() < 2 ? std::string() : lines[lines.size() - 2].substr(0, 13);
    };
    EXPECT_EQ(depth_reached("go infinite depth 3"), "info depth 3 ") << "ends without a stop";
    EXPECT_EQ(depth_reached("go depth 2 depth 4"), "info depth 4 ") << "the last value counts";
    EXPECT_EQ(depth_reached("go   ponder searchmoves e2e4 mate 3 depth 3 x"), "info depth 3 ");
    EXPECT_EQ(depth_reached("go depth3"), "info depth 3 ");
    EXPECT_EQ(depth_reached("go depth\t3"), "info depth 3 ");
    EXPECT_EQ(depth_reached("go Depth 9 depth 3 movetime 100000"), "info depth 3 ");
    // A number is read where its word stands, and then passed over like any word.
    EXPECT_EQ(depth_reached("go depth depth 3"), "info depth 3 ");
    // A word with a number takes what is left of itself for the number.
    EXPECT_FALSE(depth_reached("go depthinfinite").empty());
}

TEST(Conversation, PositionsWithoutAMoveGetTheNullAnswer) {
    EngineProcess engine;
    for (const char* const fen :
         {"7k/5KQ1/8/8/8/8/8/8 b - - 0 1", "7k/5K2/6Q1/8/8/8/8/8 b - - 0 1", "8/8/8/8/8/8/8/8 w"}) {
        engine.send(std::string("position fen ") + fen);
        EXPECT_EQ(search(engine, "go depth 3"), Lines{"bestmove 0000"}) << fen;
    }
}

TEST(Conversation, OptionsActOnTheNextCommand) {
    EngineProcess engine;
    const auto bench_nodes = [&] {
        engine.send("bench 4");
        const Lines lines = engine.read_until("NPS     : ");
        return lines.size() < 3 ? std::string() : lines[lines.size() - 3];
    };
    EXPECT_EQ(bench_nodes(), "Nodes   : 6618");
    engine.send("setoption name Style value Linear");
    EXPECT_EQ(bench_nodes(), "Nodes   : 5631");
    engine.send("setoption name Style value linear");
    EXPECT_EQ(bench_nodes(), "Nodes   : 6618");

    engine.send("setoption name MultiPV value 3");
    const Lines three = search(engine, "go depth 2");
    ASSERT_EQ(three.size(), 7U);
    for (std::size_t i = 0; i < 6; ++i) {
        const std::string part = " multipv " + std::to_string(i % 3 + 1) + " score ";
        EXPECT_NE(three[i].find(part), std::string::npos) << three[i];
    }
    engine.send("ucinewgame"); // options outlive it
    EXPECT_EQ(search(engine, "go depth 2"), three);
    engine.send("position fen 7k/8/8/8/8/8/r7/1r5K w - - 0 1"); // no move
    EXPECT_EQ(search(engine, "go depth 2").size(), 1U);
    engine.send("position fen 8/8/8/8/8/6k1/8/r6K w - - 0 1"); // no move
    EXPECT_EQ(search(engine, "go depth 2").size(), 1U);
}

} // namespace
} // namespace brindlemoth
