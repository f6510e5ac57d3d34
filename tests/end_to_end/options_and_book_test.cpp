// The book and its options, through the commands of a front end.
#include "board/fen.h"
#include "book/polyglot_key.h"
#include "support/book_file.h"
#include "support/captured_output.h"
#include "support/engine_process.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

TEST(OptionsAndBook, BookAnswersEveryGoButAnInfiniteOne) {
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
