// No input can harm the engine: thousands of malformed positions and command lines, made from fixed
// seeds and run through the dispatcher inside this process, where sanitizers and assertions watch.
#include "board/bitboard.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/position.h"
#include "movegen/legality.h"
#include "shell/command_loop.h"
#include "support/captured_output.h"
#include "support/engine_process.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace brindlemoth;

using Random = std::mt19937_64;

// One of the texts between the bars.
static std::string one_of(Random& random, std::string_view texts) {
    const auto bars = static_cast<std::uint64_t>(std::count(texts.begin(), texts.end(), '|'));
    for (std::uint64_t skip = random() % (1 + bars); skip > 0; --skip)
        texts.remove_prefix(texts.find('|') + 1);
    return std::string(texts.substr(0, texts.find('|')));
}

// The text with up to four edits: a part cut out, a byte or a word put in.
static std::string damaged(Random& random, std::string text) {
    for (std::size_t edits = random() % 5; edits > 0; --edits) {
        const std::size_t place = random() % (text.size() + 1);
        if (random() % 4 == 0)
            text.erase(place, random() % 8);
        else if (random() % 3 == 0)
            text.insert(place, 1, static_cast<char>(random() % 245 + 11));
        else
            text.insert(place,
                        one_of(random, " moves e2e4 a7a8q e1g1 z9z9 |moves|fen|startpos|name|"
                                       "value|depth|nodes |  |\t|\r|-|e3|KQkq|HAha| b |/|8|k|"
                                       "qQ|100|-1|0x7|2147483648|99999999999999999999"));
    }
    return text;
}

// The FEN of a position from a game, or of random pieces in any number on random squares, with a
// few random edits.
static std::string malformed_fen(Random& random) {
    const std::string men =
        one_of(random, "1111PNBRQKpnbrqk|1111111111111PNBRQKpnbrqk|11QKk|1p|11111111111111111Pp");
    const std::string& sound = sample_fens()[random() % sample_fens().size()];
    return damaged(random, random() % 2 == 0 ? sound : strewn_fen(random, men));
}

// A board with many pieces of both colours has very long capture sequences: a search of it takes a
// million nodes before it ends.
static bool may_be_searched(const Position& position) {
    constexpr int MOST_OFFICERS = 18;
    const Bitboard pawns = position.pieces[WHITE][PAWN] | position.pieces[BLACK][PAWN];
    return popcount(position.all_pieces & ~pawns) <= MOST_OFFICERS ||
           position.occupied[WHITE] == 0 || position.occupied[BLACK] == 0;
}

// Runs the line and returns what it printed.
static std::string run(const std::string& line, Position& position) {
    // A buffer of the exact size lets a sanitizer see a read beyond it.
    const std::vector<char> text(line.c_str(), line.c_str() + line.size() + 1);
    return joined(output_of([&] { dispatch_command(text.data(), position); }));
}

TEST(MalformedInput, AnyPositionIsSafeForEveryCommand) {
    constexpr int POSITIONS = 2000;
    Random random(20240817);
    Position position;
    position_set_fen(position, starting_fen);
    int searched = 0;
    for (int i = 0; i < POSITIONS && !testing::Test::HasFailure(); ++i) {
        const std::string line = "position fen " + malformed_fen(random);
        SCOPED_TRACE(testing::PrintToString(line));
        EXPECT_EQ(run(line, position), "");
        EXPECT_TRUE(views_agree(position));
        EXPECT_EQ(compute_pawn_key(position), position.pawn_key);

        const Position before = position;
        EXPECT_NE(run("d", position), "");
        EXPECT_NE(run("eval", position), "");
        EXPECT_NE(run(i % 4 == 0 ? "perft 2" : "perft", position).find("Total: "),
                  std::string::npos);
        EXPECT_NE(run("dupcheck", position).find(", Duplicates: 0\n"), std::string::npos);
        EXPECT_EQ(run("illegalcheck", position),
                  "No illegal moves found among move_is_legal=true set.\n");
        EXPECT_TRUE(same_position(position, before));

        if (may_be_searched(position)) {
            ++searched;
            const std::string answer = run(i % 2 == 0 ? "go depth 3" : "go nodes 2000", position);
            const std::size_t best = answer.rfind("bestmove ");
            ASSERT_NE(best, std::string::npos);
            EXPECT_EQ(answer.find("bestmove "), best) << "one only";
            const std::string move = answer.substr(best + 9, answer.size() - best - 10);
            MoveList legal;
            generate_legal(position, legal);
            EXPECT_EQ(move == "0000", legal.count == 0) << answer;
            EXPECT_EQ(legal_move(position, move) != MOVE_NONE, legal.count != 0) << answer;
            EXPECT_TRUE(same_position(position, before));
        }
    }
    EXPECT_GT(searched, POSITIONS / 2);
}

// Returns a command that does not take long: the depths are fixed, and a search has a node limit.
static std::string malformed_command(Random& random) {
    if (random() % 10 == 0)
        return one_of(random, "perft 2|bench 1|setoption name Hash value 2");
    const std::string line = damaged(
        random,
        one_of(random,
               "uci|isready|ucinewgame|stop|d|eval|dupcheck|illegalcheck|quit|setoption name|"
               "position startpos moves e2e4 e7e5|go depth 3 infinite|"
               "position fen 8/4P2k/8/8/8/8/8/K7 w - - 0 1 moves e7e8q|"
               "go wtime 10 btime 10 winc 1 movestogo 5|setoption name MultiPV value 3|"
               "setoption name OwnBook value true|setoption name BookFile value /nowhere/at all|"
               "setoption name Style value Linear|setoption name SyzygyPath value /nowhere"));
    return line.starts_with("go") ? line + " nodes 500" : line;
}

TEST(MalformedInput, AnyCommandLineIsSafe) {
    constexpr int LINES = 2000;
    Random random(1811);
    Position position;
    position_set_fen(position, starting_fen);
    for (int i = 0; i < LINES && !testing::Test::HasFailure(); ++i) {
        const std::string line = malformed_command(random);
        SCOPED_TRACE(testing::PrintToString(line));
        run(line, position);
        EXPECT_TRUE(views_agree(position));
        EXPECT_EQ(run("isready", position), "readyok\n");
    }
    // Default options and a new game remove every effect of these lines.
    for (const char* const line :
         {"setoption name Hash value 64", "setoption name MultiPV value 1",
          "setoption name Style value PeSTO", "setoption name OwnBook value false", "ucinewgame"})
        EXPECT_EQ(run(line, position), "");
    EXPECT_NE(run("bench 4", position).find("Nodes   : 6618\n"), std::string::npos);
}

// Random bytes, line feeds and NUL bytes among them, on the standard input of the engine.
TEST(MalformedInput, RandomBytesOnStandardInputAreSafe) {
    Random random(77);
    std::string noise;
    for (int i = 0; i < 200'000; ++i)
        noise += static_cast<char>(random() % 256);
    EngineProcess engine;
    engine.send_text("go depth 3\n" + noise + "\n");
    engine.send_text("go depth 6\n" + noise + "\nisready\n");
    const std::vector<std::string> lines = engine.finish();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "readyok");
}
