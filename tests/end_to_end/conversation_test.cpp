// The conversation at the prompt, where no search runs: what is a command, what is a line, how the
// program starts and ends.
#include "support/captured_output.h"
#include "support/engine_process.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

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

// All that a fresh engine prints for this input, which it gets in one piece.
Lines answer(const std::string& text, const Lines& arguments = {}) {
    EngineProcess engine(arguments);
    engine.send_text(text);
    return engine.finish();
}

// What a running engine prints for one line that starts no search.
Lines reply(EngineProcess& engine, const std::string& line) {
    engine.send(line);
    engine.send("isready");
    Lines lines = engine.read_until("readyok");
    if (!lines.empty())
        lines.pop_back();
    return lines;
}

// The lines of a search without the parts that depend on the clock.
Lines search(EngineProcess& engine, const std::string& go_line) {
    engine.send(go_line);
    Lines lines = engine.read_until("bestmove");
    std::transform(lines.begin(), lines.end(), lines.begin(), without_timing);
    return lines;
}

TEST(Conversation, EachLineMeetsItsCommandOrSilence) {
    EngineProcess engine;
    for (const char* const line : {"uci ",
                                   " uci",
                                   "uci\t",
                                   "u\rci",
                                   "UCI",
                                   "ucix",
                                   "",
                                   "\r",
                                   " ",
                                   "isready ",
                                   "isreadyy",
                                   "stop",
                                   "stopp",
                                   "quit ",
                                   "Quit",
                                   "quitnow",
                                   "ponderhit",
                                   "position",
                                   "position nonsense",
                                   "setoption",
                                   "setoption name Threads value 8",
                                   "d ",
                                   "dd",
                                   "D",
                                   " perft 2",
                                   "per",
                                   "dupcheck ",
                                   "illegalcheckx",
                                   "eval ",
                                   "evaluate"})
        EXPECT_EQ(reply(engine, line), Lines()) << '"' << line << '"';
    const struct {
        const char *line, *last_reply;
    } rows[] = {{"uci", "uciok"},
                {"uci\r\r", "uciok"},
                {"perft", "Total: 20"},
                {"perft2", "Total: 400"},
                {"perft +2x", "Total: 400"},
                {"perft -3", "Total: 20"},
                {"perfttest ", "Total: 20"}, // no whole line, so it is a perft without a number
                {"dupcheck", "Total pseudo-legal: 20, Duplicates: 0"},
                {"illegalcheck", "No illegal moves found among move_is_legal=true set."}};
    for (const auto& row : rows)
        EXPECT_EQ(reply(engine, row.line).back(), row.last_reply) << row.line;
    EXPECT_EQ(reply(engine, "uci"), UCI_BLOCK);
    EXPECT_EQ(reply(engine, "eval").front(), "=== Evaluation Trace ===");

    // Anything that begins like these is that command.
    const auto side_printed = [&] {
        const Lines board = reply(engine, "d");
        return count_beginning(board, "Side: white") == 1 ? "white" : "black";
    };
    EXPECT_STREQ(side_printed(), "white");
    EXPECT_EQ(search(engine, "gobble depth 2").size(), 3U);
    EXPECT_EQ(reply(engine, "positionstartpos moves e2e4"), Lines());
    EXPECT_STREQ(side_printed(), "black");
    EXPECT_EQ(reply(engine, "ucinewgame "), Lines()); // no command, so the position stays
    EXPECT_STREQ(side_printed(), "black");
    EXPECT_EQ(reply(engine, "ucinewgame"), Lines());
    EXPECT_STREQ(side_printed(), "white");
    EXPECT_EQ(reply(engine, "setoptions name MultiPV value 2"), Lines());
    EXPECT_EQ(search(engine, "go depth 1").size(), 3U);
    engine.send("quit");
    EXPECT_EQ(engine.read_to_end(), Lines());
    EXPECT_EQ(engine.wait_for_exit(), 0);
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
    for (int i = 0; i < 220; ++i)
        game += "g1f3 g8f6 f3g1 f6g8 ";
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
         {Lines{""}, Lines{"Bench", "1"}, Lines{"x", "bench", "1"}, Lines{"perfttests"}})
        EXPECT_EQ(answer("isready\n", arguments), Lines{"readyok"}) << arguments[0];
}

// From the command line and, with no arguments, as a command.
TEST(Conversation, BenchReadsItsDepthLikeAnyNumber) {
    const struct {
        Lines arguments;
        std::string command, depth, nodes;
    } rows[] = {{{"bench", "5", "7"}, "d", "5", "12533"}, {{"bench", "4x"}, "d", "4", "6618"},
                {{"bench"}, "d", "10", "287510"},         {{"bench", "-3"}, "d", "10", "287510"},
                {{}, "bench  3 9", "3", "3083"},          {{}, "bench1", "1", "667"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.nodes);
        const Lines lines = answer(row.command + "\n", row.arguments);
        EXPECT_EQ(count_beginning(lines, "bestmove"), 5);
        EXPECT_EQ(count_beginning(lines, "Side:"), 0) << "the command loop is never entered";
        ASSERT_GE(lines.size(), 5U);
        EXPECT_EQ(lines[lines.size() - 5], "=== Bench ===");
        EXPECT_EQ(lines[lines.size() - 4], "Depth   : " + row.depth);
        EXPECT_EQ(lines[lines.size() - 3], "Nodes   : " + row.nodes);
    }
}

// Half a minute with assertions and sanitizers.
TEST(Conversation, PerfttestIsABatchJobToo) {
    const Lines lines = answer("d\n", {"perfttest", "extra"});
    ASSERT_EQ(lines.size(), 10U) << "the command loop is never entered";
    EXPECT_EQ(lines.front(), "Running perft test suite (6 positions)...");
    EXPECT_EQ(lines.back(), "6/6 passed");
}

TEST(Conversation, NewGameForgetsWhatSearchesLearnedButNoOption) {
    EngineProcess engine;
    engine.send("setoption name MultiPV value 3");
    const Lines first = search(engine, "go depth 7");
    EXPECT_EQ(first.size(), 22U);
    EXPECT_NE(search(engine, "go depth 7"), first) << "the table is still warm";
    engine.send("position startpos moves e2e4");
    engine.send("ucinewgame");
    EXPECT_EQ(search(engine, "go depth 7"), first);
}

} // namespace
} // namespace brindlemoth
