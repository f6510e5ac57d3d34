// Options and the book as a front end meets them.
#include "book/polyglot_key.h"
#include "support/book_file.h"
#include "support/captured_output.h"
#include "support/engine_process.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// The command that loads a book with one unlikely move for the starting position.
std::string load_small_book(const TemporaryDirectory& directory) {
    const std::uint64_t key = polyglot_key(position_from(starting_fen));
    return "setoption name BookFile value " +
           directory.write("my \xC3\xBC.bin", book_bytes({{key, book_move(H2, H4), 1}})) + "\n";
}

TEST(OptionsAndBook, BookAnswersEveryGoButAnInfiniteOne) {
    const TemporaryDirectory directory;
    EngineProcess engine;
    engine.send_text(load_small_book(directory) +
                     "go\ngo movetime 50\ngo nodes 1\ngo infinite depth 1\n"
                     "setoption name OwnBook value false\ngo depth 1\n"
                     "setoption name OwnBook value true\ngo depth 1\n"
                     "position startpos moves e2e4\ngo depth 1\nucinewgame\ngo depth 1\n");
    const std::string book = "bestmove h2h4", info = "info", other = "bestmove";
    EXPECT_EQ(beginnings(engine.finish(), {book, info, other}),
              (Lines{book, book, book, info, other, info, other, book, info, other, book}));
}

TEST(OptionsAndBook, OptionSetDuringASearchWaitsForItsEnd) {
    const TemporaryDirectory directory;
    EngineProcess engine;
    engine.send("go infinite");
    engine.read_until("info depth 3"); // it polls its input from the second iteration on
    engine.send_text("setoption name MultiPV value 3\n" + load_small_book(directory) +
                     "isready\nstop\ngo depth 2\n");
    for (const std::string& line : engine.read_until("bestmove"))
        EXPECT_EQ(line.find(" multipv "), std::string::npos) << line;
    engine.send_text("setoption name OwnBook value false\ngo depth 2\n");
    EXPECT_EQ(beginnings(engine.finish(), {"bestmove h2h4", "info"}),
              (Lines{"bestmove h2h4", "info", "info", "info", "info", "info", "info"}));
}

} // namespace
} // namespace brindlemoth
