// What input does while a search runs. A pipe may deliver it in any portions, a file delivers all
// of it at once.
#include "support/book_file.h"
#include "support/captured_output.h"
#include "support/engine_process.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

// Starts a search that only input can end, and waits until it polls its input.
static void begin_search(EngineProcess& engine) {
    engine.send("go infinite");
    engine.read_until("info depth 3");
}

static Lines answer_file(const std::string& text) {
    const TemporaryDirectory directory;
    EngineProcess engine({}, directory.write("input", text));
    return engine.finish();
}

TEST(SearchInput, StopEndsTheSearchAndIsreadyIsAnsweredInTheMiddle) {
    EngineProcess engine;
    for (const char* const stop : {"stop", "stop\r"}) {
        begin_search(engine);
        for (int i = 0; i < 40; ++i) { // more than fit into the queue
            engine.send("isready");
            EXPECT_EQ(count_beginning(engine.read_until("readyok"), "bestmove"), 0);
        }
        engine.send(stop);
        EXPECT_EQ(count_beginning(engine.read_until("bestmove"), "readyok"), 0);
    }
    engine.send("stop"); // at the prompt it has no effect on the next search
    engine.send("go depth 4");
    EXPECT_EQ(count_beginning(engine.read_until("bestmove"), "info depth 4 "), 1);
    EXPECT_EQ(engine.finish(), Lines());
}

TEST(SearchInput, QuitGivesOneBestmoveAndEnds) {
    EngineProcess engine;
    begin_search(engine);
    engine.send_text("d\nquit\r\nuci\n");
    const Lines lines = engine.read_to_end(); // the input of the engine stays open
    EXPECT_EQ(engine.wait_for_exit(), 0);
    EXPECT_EQ(beginnings(lines, {"bestmove", "Side:", "uciok"}), (Lines{"bestmove", "Side:"}));
}

// Behind a queue that is full, or nearly so, and lines in the input buffer.
TEST(SearchInput, StopIsreadyAndQuitActBehindAnyNumberOfLines) {
    for (const int count : {15, 16, 1000}) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "perft 1\n\n\r\n"; // blank lines are dropped
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

// The quiescence search alone visits millions of nodes here, so iteration 1 does not end by itself.
TEST(SearchInput, StopAndLimitsEndASearchOfACrowdedBoard) {
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

TEST(SearchInput, UnfinishedLinesNeverBlockTheSearch) {
    EngineProcess engine;
    engine.send_text("go infinite\nst"); // together with the go line
    engine.read_until("info depth 8");
    engine.send_text("o"); // and alone
    engine.read_until("info depth 10");
    engine.send_text("p\n");
    engine.read_until("bestmove");
    engine.send_text("go depth 5\nisrea");
    engine.read_until("bestmove");
    engine.send_text("dy\n");
    EXPECT_EQ(engine.read_line(), "readyok");
    EXPECT_EQ(engine.finish(), Lines());
}

TEST(SearchInput, LongLinesAreCutBeforeAStopAndWholeBehindIt) {
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

    // 1,023 characters hold 200 of these 400 moves.
    std::string game = "position startpos moves";
    for (int i = 0; i < 100; ++i)
        game += " g1f3 g8f6 f3g1 f6g8";
    const struct {
        std::string text, clock;
    } ROWS[] = {{game + "\nstop\nd\n", "50-move: 200,"},
                {"stop\n" + game + "\nd\n", "50-move: 400,"},
                {"go depth 3\nstop\n" + game + "\nisready\nd\n", "50-move: 400,"}};
    for (const auto& row : ROWS) {
        begin_search(engine);
        engine.send_text(row.text);
        EXPECT_TRUE(engine.read_until("50-move: ").back().starts_with(row.clock)) << row.text;
        engine.send("ucinewgame");
    }
    const Lines lines = answer_file("go infinite\nstop\n" + game + "\nd\n");
    EXPECT_EQ(count_beginning(lines, "50-move: 400,"), 1);
}

TEST(SearchInput, EndOfInputLetsTheSearchFinish) {
    for (const std::string text : {"go depth 9", "go depth 9\nuci"}) {
        EngineProcess engine;
        engine.send_text(text);
        Lines expected = {"info depth 9 ", "bestmove", "uciok"};
        const Lines lines = beginnings(engine.finish(), expected);
        expected.resize(text.ends_with("uci") ? 3 : 2);
        EXPECT_EQ(lines, expected) << text;
    }
    EngineProcess engine;
    begin_search(engine);
    engine.send_text("stop"); // the end of the input finishes the line
    EXPECT_EQ(count_beginning(engine.finish(), "bestmove"), 1);
}

TEST(SearchInput, FileIsReadOnDuringTheSearch) {
    const struct {
        const char* text;
        Lines words;
    } ROWS[] = {
        {"go infinite\nisready\nd\nstop\nuci\n", {"readyok", "bestmove", "Side:", "uciok"}},
        {"go infinite\r\nisready\r\nd\r\nquit\r\nuci\r\n", {"readyok", "bestmove", "Side:"}},
        {"go infinite\nstop", {"bestmove"}},
        {"go depth 7\ngo depth 6\nd\nuci", {"bestmove", "bestmove", "Side:", "uciok"}}};
    for (const auto& row : ROWS)
        EXPECT_EQ(beginnings(answer_file(row.text), {"readyok", "bestmove", "Side:", "uciok"}),
                  row.words)
            << row.text;
}

// Also when the stop or quit stands behind a full queue.
TEST(SearchInput, OnlyOneSearchIsStopped) {
    std::string sixteen;
    for (int i = 0; i < 16; ++i)
        sixteen += "d\n";
    for (const std::string& text : {"bench 6\nstop\n" + sixteen, "bench 6\n" + sixteen + "quit\n",
                                    "go infinite\ngo depth 6\n" + sixteen + "quit\n"}) {
        const Lines lines = answer_file(text);
        const bool bench = text[0] == 'b';
        EXPECT_EQ(count_beginning(lines, "bestmove"), bench ? 5 : 2) << text;
        EXPECT_EQ(count_beginning(lines, "info depth 6 "), bench ? 4 : 1) << text;
        EXPECT_EQ(count_beginning(lines, "Side:"), 16) << text;
    }
}
