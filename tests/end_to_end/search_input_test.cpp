// What input does while a search runs. From a pipe it may come in any portions; from a file all
// of it is there at once.
#include "support/book_file.h"
#include "support/engine_process.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// Begins a search that only input can end, and waits until it reads its input.
void begin_search(EngineProcess& engine) {
    engine.send("go infinite");
    engine.read_until("info depth 3");
}

// The lines that begin with one of these, in their order, without what follows.
Lines sequence(const Lines& lines, const Lines& prefixes) {
    Lines found;
    for (const std::string& line : lines)
        for (const std::string& prefix : prefixes)
            if (line.starts_with(prefix))
                found.push_back(prefix);
    return found;
}

Lines answer_file(const std::string& text) {
    const TemporaryDirectory directory;
    EngineProcess engine({}, directory.write("input", text));
    return engine.finish();
}

// The numbers of these positions, in the order in which they were printed.
std::vector<int> numbers_printed(const Lines& lines) {
    std::vector<int> numbers;
    for (const std::string& line : lines)
        if (const std::string prefix = "50-move: "; line.starts_with(prefix))
            numbers.push_back(std::stoi(line.substr(prefix.size())));
    return numbers;
}

TEST(SearchInput, StopEndsTheSearchAndIsreadyIsAnsweredInTheMiddle) {
    EngineProcess engine;
    for (const char* const stop : {"stop", "stop\r"}) {
        begin_search(engine);
        for (int i = 0; i < 40; ++i) { // more than could be parked
            engine.send("isready");
            EXPECT_EQ(count_beginning(engine.read_until("readyok"), "bestmove"), 0);
        }
        engine.send(stop);
        EXPECT_EQ(count_beginning(engine.read_until("bestmove"), "readyok"), 0);
    }
    engine.send("stop"); // at the prompt: it does not reach into the next search
    engine.send("go depth 4");
    EXPECT_EQ(count_beginning(engine.read_until("bestmove"), "info depth 4 "), 1);
    EXPECT_EQ(engine.finish(), Lines());
}

TEST(SearchInput, QuitGivesOneBestmoveAndEnds) {
    for (const char* const text : {"quit\r\n", "d\nquit\nuci\n"}) {
        EngineProcess engine;
        begin_search(engine);
        engine.send_text(text);
        const Lines lines = engine.read_to_end(); // its input stays open
        EXPECT_EQ(engine.wait_for_exit(), 0);
        EXPECT_EQ(count_beginning(lines, "bestmove"), 1) << text;
        EXPECT_EQ(count_beginning(lines, "uciok"), 0) << text;
        EXPECT_EQ(count_beginning(lines, "Side:"), text[0] == 'd' ? 1 : 0) << text;
    }
}

TEST(SearchInput, OtherLinesWaitInTheirOrder) {
    EngineProcess engine;
    begin_search(engine);
    engine.send_text("uci\nposition startpos moves e2e4\nd\ngo depth 2\nnonsense\n"
                     "setoption name MultiPV value 2\ngo depth 1\neval \nucinewgame\nd\n");
    engine.send("isready");
    EXPECT_EQ(engine.read_until("readyok").back(), "readyok"); // all of it was read by now
    engine.send("stop");
    engine.read_until("bestmove");
    const Lines expected = {
        "uciok",         "Side: black",   "info depth 1 ", "info depth 2", "bestmove",
        "info depth 1 ", "info depth 1 ", "bestmove",      "Side: white",
    };
    EXPECT_EQ(sequence(engine.finish(), {"bestmove", "uciok", "Side: black", "Side: white",
                                         "info depth 1 ", "info depth 2"}),
              expected);
}

TEST(SearchInput, MoreLinesThanAreParkedKeepTheirOrder) {
    std::string text;
    std::vector<int> expected;
    for (int number = 1; number <= 30; ++number) { // two lines each
        text += "position fen 4k3/8/8/8/8/8/8/4K3 w - - " + std::to_string(number) + " 1\nd\n";
        expected.push_back(number);
    }
    EngineProcess engine;
    engine.send_text("go depth 9\n" + text);
    EXPECT_EQ(numbers_printed(engine.finish()), expected);
    EXPECT_EQ(numbers_printed(answer_file("go depth 9\n" + text)), expected);
    // With searches in between, each of which takes in what there is room for.
    EXPECT_EQ(numbers_printed(answer_file("go depth 5\n" + text + "go depth 5\n" + text)).size(),
              2 * expected.size());
}

// The ring is full, and so is more or less of the buffer behind it.
TEST(SearchInput, WordsThatCannotWaitActBehindAnyNumberOfLines) {
    for (const int count : {15, 16, 17, 1000}) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "perft 1\n\n\r\n"; // blank lines take no room
        EngineProcess engine;
        begin_search(engine);
        engine.send_text(text + "isready\nperft 1\nisrea");
        engine.read_until("readyok");
        engine.send_text("dy\nuci\nstop\nperft 1");
        engine.read_until("readyok");
        const Lines lines = engine.finish();
        EXPECT_TRUE(lines[0].starts_with("bestmove") || lines[0].starts_with("info")) << lines[0];
        EXPECT_EQ(count_beginning(lines, "Total: 20"), count + 2);
        EXPECT_EQ(count_beginning(lines, "uciok"), 1);
        EXPECT_EQ(count_beginning(lines, "readyok"), 0);
    }
    EngineProcess engine;
    std::string text;
    for (int i = 0; i < 20; ++i)
        text += "go infinite\n";
    engine.send_text(text + "quit\nuci\n");
    const Lines lines = engine.read_to_end();
    EXPECT_EQ(count_beginning(lines, "bestmove"), 20);
    EXPECT_EQ(count_beginning(lines, "uciok"), 0);
}

// Quiescence alone has millions of nodes here, and iteration 1 does not end.
TEST(SearchInput, CrowdedBoardsAreNoHidingPlace) {
    const std::string fen =
        "qQQqq1qk/1q1q1q1R/q1q1Qqq1/1Q1QbQ2/q1q1Q1qq/QbQQQ1Q1/rQBQ1Q1Q/K1Q1Q1Qn b - - 0 1";
    Position position = position_from(fen);
    for (const char* const text : {"go infinite\nstop\n", "go movetime 1\n", "go nodes 1\n"}) {
        EngineProcess engine;
        engine.send_text("position fen " + fen + "\n" + text);
        const Lines lines = engine.finish();
        ASSERT_EQ(lines.size(), 1U) << text;
        EXPECT_NE(legal_move(position, lines[0].substr(9)), MOVE_NONE) << lines[0];
    }
}

TEST(SearchInput, FinishedLinesAreSeenInThePortionOfTheGoLine) {
    EngineProcess engine;
    engine.send_text("go infinite\nstop\n");
    engine.read_until("bestmove");
    engine.send_text("isready\ngo infinite\nisready\nperft 1\nstop\nisready\n");
    const Lines lines = engine.finish();
    EXPECT_EQ(sequence(lines, {"readyok", "bestmove", "Total"}),
              (Lines{"readyok", "readyok", "readyok", "bestmove", "Total"}));
}

TEST(SearchInput, UnfinishedLinesNeverHoldTheSearch) {
    EngineProcess engine;
    engine.send_text("go infinite\nst"); // in the portion of the go line
    engine.read_until("info depth 8");
    engine.send_text("o"); // and in one of its own
    engine.read_until("info depth 10");
    engine.send_text("p\n");
    engine.read_until("bestmove");
    engine.send_text("go depth 5\nisrea");
    engine.read_until("bestmove");
    engine.send_text("dy\n");
    EXPECT_EQ(engine.read_line(), "readyok");
    EXPECT_EQ(engine.finish(), Lines());
}

TEST(SearchInput, LongLinesArriveInShorterPieces) {
    constexpr std::size_t PIECE = 1023;
    const auto filler = [](std::size_t length) { return std::string(length, 'x'); };
    EngineProcess engine;
    begin_search(engine);
    engine.send(filler(PIECE) + "isready");
    engine.read_until("readyok");
    engine.send(filler(PIECE - 1) + "stop"); // its second piece is "top"
    engine.send(filler(PIECE + 1) + "stop"); // "xstop"
    engine.send("isready");
    EXPECT_EQ(count_beginning(engine.read_until("readyok"), "bestmove"), 0);
    engine.send(filler(2 * PIECE) + "stop");
    engine.read_until("bestmove");

    // A game is cut like any line: 24 characters, then five for each move, the last without its
    // blank.
    std::string game = "position startpos moves ";
    for (int i = 0; i < 60; ++i)
        game += "g1f3 g8f6 f3g1 f6g8 ";
    begin_search(engine);
    engine.send_text(game + "\nstop\nd\n");
    const Lines lines = engine.finish();
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(lines.back().starts_with("50-move: 200,")) << lines.back();
}

TEST(SearchInput, EndOfInputLetsTheSearchFinish) {
    for (const char* const text :
         {"go depth 9\n", "go depth 9", "go depth 9\nuci\n", "go depth 9\nuci"}) {
        EngineProcess engine;
        engine.send_text(text);
        const Lines lines = engine.finish();
        EXPECT_EQ(count_beginning(lines, "info depth 9 "), 1) << text;
        EXPECT_EQ(count_beginning(lines, "bestmove"), 1) << text;
        ASSERT_FALSE(lines.empty());
        const bool uci = std::string(text).find("uci") != std::string::npos;
        EXPECT_TRUE(lines.back().starts_with(uci ? "uciok" : "bestmove")) << text;
    }
    EngineProcess engine;
    begin_search(engine);
    engine.send_text("stop"); // the end of the input finishes the line
    EXPECT_EQ(count_beginning(engine.finish(), "bestmove"), 1);
}

TEST(SearchInput, FileIsReadOnDuringTheSearch) {
    const Lines words = {"readyok", "bestmove", "Side: white", "uciok"};
    EXPECT_EQ(sequence(answer_file("go infinite\nisready\nd\nstop\nuci\n"), words),
              (Lines{"readyok", "bestmove", "Side: white", "uciok"}));
    EXPECT_EQ(sequence(answer_file("go infinite\r\nisready\r\nd\r\nquit\r\nuci\r\n"), words),
              (Lines{"readyok", "bestmove", "Side: white"}));
    EXPECT_EQ(sequence(answer_file("go infinite\nstop"), words), Lines{"bestmove"});
    EXPECT_EQ(sequence(answer_file("go depth 7\ngo depth 6\nd\nuci"), words),
              (Lines{"bestmove", "bestmove", "Side: white", "uciok"}));
    EXPECT_EQ(sequence(answer_file("quit"), words), Lines());
}

TEST(SearchInput, BenchLosesOnlyTheSearchThatIsStopped) {
    for (const char* const word : {"stop", "quit"}) {
        EngineProcess engine;
        engine.send_text(std::string("bench 6\n") + word + "\nuci\n");
        const Lines lines = engine.finish();
        EXPECT_EQ(count_beginning(lines, "bestmove"), 5) << word;
        EXPECT_EQ(count_beginning(lines, "info depth 1 "), 5) << word;
        EXPECT_EQ(count_beginning(lines, "info depth 6 "), 4) << word;
        EXPECT_EQ(count_beginning(lines, "NPS     : "), 1) << word;
        EXPECT_EQ(count_beginning(lines, "uciok"), word[0] == 's' ? 1 : 0) << word;
    }
}

} // namespace
} // namespace brindlemoth
