// Options and the opening book as a front end meets them.
#include "board/make_move.h"
#include "book/polyglot_key.h"
#include "support/book_file.h"
#include "support/engine_process.h"
#include "support/support.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

Lines ask(EngineProcess& engine, const std::string& go_line) {
    engine.send(go_line);
    return engine.read_until("bestmove");
}

int count_with(const Lines& lines, const std::string& part) {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find(part) != std::string::npos;
    }));
}

// A book with one unlikely move for the starting position.
std::string write_small_book(const TemporaryDirectory& directory, const std::string& name) {
    return directory.write(
        name, book_bytes({{polyglot_key(position_from(starting_fen)), book_move(H2, H4), 1}}));
}

TEST(OptionsAndBook, BookAnswersEveryGoButAnInfiniteOne) {
    const TemporaryDirectory directory;
    const Lines book_answer = {"bestmove h2h4"};
    EngineProcess engine;
    engine.send("setoption name BookFile value " + write_small_book(directory, "my book.bin"));
    for (const char* const go_line : {"go", "go depth 6", "go movetime 50", "go nodes 1"})
        EXPECT_EQ(ask(engine, go_line), book_answer) << go_line;
    EXPECT_GT(count_with(ask(engine, "go infinite depth 2"), "info"), 0);

    engine.send("setoption name OwnBook value false");
    EXPECT_GT(count_with(ask(engine, "go depth 2"), "info"), 0);
    engine.send("setoption name OwnBook value true");
    EXPECT_EQ(ask(engine, "go depth 2"), book_answer);

    engine.send("position startpos moves e2e4"); // not in the book
    EXPECT_GT(count_with(ask(engine, "go depth 2"), "info"), 0);

    engine.send("ucinewgame");
    EXPECT_EQ(ask(engine, "go depth 2"), book_answer);
    engine.finish();
}

TEST(OptionsAndBook, OptionSetDuringASearchWaitsForItsEnd) {
    const TemporaryDirectory directory;
    EngineProcess engine;
    engine.send("go infinite");
    engine.read_until("info depth 3"); // it polls its input from the second iteration on
    engine.send("setoption name MultiPV value 3");
    engine.send("setoption name BookFile value " + write_small_book(directory, "book"));
    engine.send("isready");
    EXPECT_EQ(count_with(engine.read_until("readyok"), " multipv "), 0);
    engine.send("stop");
    EXPECT_EQ(count_with(engine.read_until("bestmove"), " multipv "), 0);

    EXPECT_EQ(ask(engine, "go depth 2"), Lines{"bestmove h2h4"});
    engine.send("setoption name OwnBook value false");
    EXPECT_EQ(count_with(ask(engine, "go depth 2"), " multipv 3 "), 2);
    engine.finish();
}

// A walk through a genuine book may come to its end early, but not twenty in a row.
TEST(OptionsAndBook, GenuineBookPlaysTenPlies) {
    const std::string path = shared_directory() + "/books/book-large.bin";
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << "needs the shared book book-large.bin";
    EngineProcess engine;
    engine.send("setoption name BookFile value " + path);
    std::size_t longest = 0;
    for (int walk = 0; walk < 20 && longest < 10; ++walk) {
        Position position = position_from(starting_fen);
        std::string moves;
        for (std::size_t ply = 0;; ++ply) {
            longest = std::max(longest, ply);
            engine.send("position startpos moves" + moves);
            const Lines lines = ask(engine, "go depth 1");
            if (lines.size() > 1)
                break; // the search has answered
            const std::string move = lines[0].substr(std::string("bestmove ").size());
            moves += " " + move;
            const Move played = legal_move(position, move);
            ASSERT_NE(played, MOVE_NONE) << moves;
            make_move(position, played);
        }
    }
    EXPECT_GE(longest, 10U);
    engine.finish();
}

} // namespace
} // namespace brindlemoth
