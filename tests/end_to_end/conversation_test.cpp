// The command loop while no search runs: which lines are commands, where lines end, and how the
// program starts and ends.
#include "board/fen.h"
#include "book/polyglot_key.h"
#include "support/book_file.h"
#include "support/captured_output.h"
#include "support/engine_process.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

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
static Lines answer(const std::string& text, const Lines& arguments = {}) {
    EngineProcess engine(arguments);
    engine.send_text(text);
    return engine.finish();
}

TEST(Conversation, EachLineRunsItsCommandOrPrintsNothing) {
    EXPECT_EQ(answer("uci \n uci\nuci\t\nu\rci\nUCI\nucix\n\n\r\n \nisreadyy\nstop\nstopp\nquit \n"
                     "Quit\nquitnow\nponderhit\nposition\nposition nonsense\nsetoption\nd \ndd\nD\n"
                     " perft 2\nper\ndupcheck \nillegalcheckx\neval \nevaluate\n"),
              Lines());
    const struct {
        const char *line, *last_reply;
    } ROWS[] = {{"perft", "Total: 20"},
                {"perft2", "Total: 400"},
                {"perft +2x", "Total: 400"},
                {"perft -3", "Total: 20"},
                {"perfttest ", "Total: 20"}, // not exactly perfttest, so perft without a number
                {"dupcheck", "Total pseudo-legal: 20, Duplicates: 0"},
                {"illegalcheck", "No illegal moves found among move_is_legal=true set."},
                {"eval", "Total (side-to-move): +20 cp"}};
    for (const auto& row : ROWS)
        EXPECT_EQ(answer(row.line + std::string("\n")).back(), row.last_reply) << row.line;
    EXPECT_EQ(answer("uci\r\r\n"), UCI_BLOCK);
    // These commands match as prefixes, except ucinewgame.
    EXPECT_EQ(beginnings(answer("gobble depth 2\npositionstartpos moves e2e4\nd\nucinewgame \nd\n"
                                "ucinewgame\nd\nsetoptions name MultiPV value 2\ngo depth 1\n"),
                         {"info", "bestmove", "Side: black", "Side: white"}),
              (Lines{"info", "info", "bestmove", "Side: black", "Side: black", "Side: white",
                     "info", "info", "bestmove"}));
}

TEST(Conversation, LongLinesArriveInPiecesAndAnyLineEndWorks) {
    using namespace std::string_literals;
    constexpr std::size_t PIECE = 4095;
    const auto filler = [](std::size_t length) { return std::string(length, 'x'); };
    const Lines ready = {"readyok"};
    const struct {
        std::string text;
        Lines expected, arguments = {};
    } ROWS[] = {
        {filler(PIECE) + "isready\n", ready},
        {filler(PIECE - 1) + "isready\n", {}},
        {filler(PIECE + 1) + "isready\n", {}},
        {filler(100'000) + "\nisready\n", ready},
        {"", {}},
        {"isready", ready}, // the last line needs no line feed
        {"isready\r", ready},
        {"isready\nquit\nisready\n", ready},
        {"isready\0junk\n\0isready\n"s, ready}, // a line that holds a NUL byte ends there
        {"isready\n", ready, {""}},
        {"isready\n", ready, {"Bench", "1"}},
        {"isready\n", ready, {"x", "bench", "1"}},
        {"isready\n", ready, {"perfttests"}},
    };
    for (const auto& row : ROWS)
        EXPECT_EQ(answer(row.text, row.arguments), row.expected)
            << testing::PrintToString(row.arguments)
            << testing::PrintToString(row.text.substr(0, 80));
    // A game that is longer than a line is played as far as the first piece reaches: 24
    // characters, then five for each move.
    std::string game = "position startpos moves ";
    for (int i = 0; i < 220; ++i)
        game += "g1f3 g8f6 f3g1 f6g8 ";
    EXPECT_EQ(count_beginning(answer(game + "\nd\n"), "50-move: 814,"), 1);
}

// From the command line, where the command loop is never entered, and as a command.
TEST(Conversation, BenchReadsItsDepthLikeAnyNumber) {
    const struct {
        Lines arguments;
        std::string command, depth, nodes;
    } ROWS[] = {{{"bench", "5", "7"}, "d", "Depth   : 5", "Nodes   : 12533"},
                {{"bench", "-3"}, "d", "Depth   : 10", "Nodes   : 287510"},
                {{}, "bench  3 9", "Depth   : 3", "Nodes   : 3083"},
                {{}, "bench1", "Depth   : 1", "Nodes   : 667"}};
    for (const auto& row : ROWS)
        EXPECT_EQ(beginnings(answer(row.command + "\n", row.arguments),
                             {"Side:", "=== Bench ===", row.depth, row.nodes}),
                  (Lines{"=== Bench ===", row.depth, row.nodes}));
}

// With assertions and sanitizers this takes half a minute.
TEST(Conversation, PerfttestIsABatchJobToo) {
    const Lines lines = answer("d\n", {"perfttest", "extra"});
    ASSERT_EQ(lines.size(), 10U) << "the command loop is never entered";
    EXPECT_EQ(lines.front(), "Running perft test suite (6 positions)...");
    EXPECT_EQ(lines.back(), "6/6 passed");
}

TEST(Conversation, NewGameForgetsWhatSearchesLearnedButNoOption) {
    Lines lines = answer("setoption name MultiPV value 3\ngo depth 7\ngo depth 7\n"
                         "position startpos moves e2e4\nucinewgame\ngo depth 7\n");
    ASSERT_EQ(lines.size(), 3U * 22U);
    std::string searches[3];
    for (std::size_t i = 0; i < lines.size(); ++i)
        searches[i / 22] += without_timing(lines[i]) + "\n";
    EXPECT_NE(searches[1], searches[0]) << "the table is still warm";
    EXPECT_EQ(searches[2], searches[0]);
}

TEST(Conversation, TheBookAnswersEveryGoButAnInfiniteOne) {
    const TemporaryDirectory directory;
    const std::uint64_t key = polyglot_key(position_from(starting_fen));
    EngineProcess engine;
    engine.send_text("setoption name OwnBook value true\ngo depth 1\n" // no book is loaded yet
                     "setoption name BookFile value " +
                     directory.write("my \xC3\xBC.bin", book_bytes({{key, book_move(H2, H4), 1}})) +
                     "\ngo\ngo movetime 50\ngo nodes 1\ngo infinite depth 1\n"
                     "setoption name OwnBook value false\ngo depth 1\n"
                     "setoption name OwnBook value true\ngo depth 1\n"
                     "position startpos moves e2e4\ngo depth 1\n");
    const std::string book = "bestmove h2h4", info = "info", other = "bestmove";
    EXPECT_EQ(beginnings(engine.finish(), {book, info, other}),
              (Lines{info, other, book, book, book, info, other, info, other, book, info, other}));
}
