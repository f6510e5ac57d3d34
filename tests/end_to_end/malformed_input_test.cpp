// No input can harm the engine: thousands of malformed positions and command lines, made from fixed
// seeds and run through the dispatcher inside this process, where sanitizers and assertions watch.
#include "board/bitboard.h"
#include "board/position.h"
#include "movegen/legality.h"
#include "shell/command_loop.h"
#include "support/captured_output.h"
#include "support/engine_process.h"
#include "support/support.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {
namespace {

using Random = std::mt19937_64;

int below(Random& random, std::size_t bound) {
    return static_cast<int>(random() % bound);
}

template <std::size_t N> std::string one_of(Random& random, const char* const (&texts)[N]) {
    return texts[random() % N];
}

constexpr const char* CASTLINGS[] = {"-",    "KQkq", "K",    "q",        "KKKK", "HAha",
                                     "qkQK", "xyz",  "K-q-", "KQkqKQkq", "",     "\xff"};
constexpr const char* EP_FIELDS[] = {"-",  "e3", "d6", "a1", "h8", "e",  "e9",  "i3",
                                     "e0", "33", "ee", "--", "E3", "e4", "e3e", "\xff\xff"};
constexpr const char* COUNTERS[] = {
    "0",  "1",   "49",  "98",         "99",         "100",        "101",
    "-1", "abc", "1e9", "2147483647", "2147483648", "4294967295", "99999999999999999999",
    "",   "+5",  "0x7"};

std::string random_bytes(Random& random, int length) {
    std::string text;
    for (int i = 0; i < length; ++i) {
        const char c = static_cast<char>(1 + below(random, 255));
        text += c == '\n' ? ' ' : c;
    }
    return text;
}

// A full board of 64 squares with the given number of pieces of these letters, kings as they fall.
std::string random_board(Random& random, int pieces, const char* letters) {
    std::string squares(64, '1');
    for (int i = 0; i < pieces; ++i)
        squares[random() % 64] = letters[random() % std::strlen(letters)];
    for (int rank = 7; rank > 0; --rank)
        squares.insert(static_cast<std::size_t>(rank) * 8, "/");
    return squares;
}

std::string random_fields(Random& random) {
    return " " + one_of(random, {"w", "b", "W", "x", "", "white"}) + " " +
           one_of(random, CASTLINGS) + " " + one_of(random, EP_FIELDS) + " " +
           one_of(random, COUNTERS) + " " + one_of(random, COUNTERS);
}

void mutate(Random& random, std::string& text) {
    constexpr const char* LETTERS =
        "pnbrqkPNBRQKpnbrqkPNBRQK12345678//90 -wbKQkqaehx\t\r\x01\x80\xff";
    for (int edits = 1 + below(random, 4); edits > 0 && !text.empty(); --edits) {
        const std::size_t place = random() % text.size();
        const char letter = LETTERS[random() % std::strlen(LETTERS)];
        const int kind = below(random, 4);
        text.replace(place,
                     kind == 0   ? 0
                     : kind == 1 ? 1 + random() % 5
                                 : 1,
                     kind == 1 ? "" : std::string(1, letter));
    }
}

std::string malformed_fen(Random& random) {
    constexpr const char* MEN = "PNBRQKpnbrqk";
    const std::vector<std::string>& sound = sample_fens();
    std::string fen = sound[random() % sound.size()];
    switch (below(random, 9)) {
    case 0: // cut off
        fen.resize(random() % fen.size());
        return fen;
    case 1: // noise
        return random_bytes(random, below(random, 120));
    case 2: // any board, with no king or several, pawns on the outer ranks
        return random_board(random, below(random, 24), MEN) + random_fields(random);
    case 3: // crowded
        return random_board(random, 300, MEN) + random_fields(random);
    case 4: // one kind of piece
        return random_board(random, 1 + below(random, 300), &MEN[below(random, 12)]) +
               random_fields(random);
    case 5: // a sound board, the rest not
        return fen.substr(0, fen.find(' ')) + random_fields(random);
    case 6: // too much of everything
        return sound[random() % sound.size()] + one_of(random, {"", " ", "/", "  "}) + fen;
    default:
        mutate(random, fen);
        return fen;
    }
}

std::string random_moves(Random& random) {
    constexpr const char* TOKENS[] = {"e2e4", "e7e5",  "e1g1", "e8c8", "a7a8q", "h2h1n",
                                      "e7e8", "e7e8Q", "0000", "e2",   "e2e4e", "\xff\xff\xff\xff",
                                      "z9z9", "e5d6",  "a1a8", "b1c3", "moves"};
    std::string text = one_of(random, {" moves", " moves ", "moves", " moved"});
    for (int count = below(random, 12); count > 0; --count)
        text += " " + one_of(random, TOKENS);
    return text;
}

// The first iteration cannot be interrupted, and its exchanges have no bound on a board full of
// officers of both colours: such a board is not searched.
bool may_be_searched(const Position& position) {
    constexpr int MOST_OFFICERS = 18;
    const Bitboard pawns = position.pieces[WHITE][PAWN] | position.pieces[BLACK][PAWN];
    return popcount(position.all_pieces & ~pawns) <= MOST_OFFICERS ||
           position.occupied[WHITE] == 0 || position.occupied[BLACK] == 0;
}

// Runs the line and returns what it printed.
std::string run(const std::string& line, Position& position) {
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
        std::string line = "position fen " + malformed_fen(random);
        if (below(random, 3) == 0)
            line += random_moves(random);
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

// Nothing here starts a long job: what takes a depth gets a small one, or none that can be read.
std::string random_command(Random& random) {
    constexpr const char* NUMBERS[] = {"0",  "-1",         "7x",          "abc",
                                       "",   "2147483648", "-2147483649", "99999999999999999999",
                                       "+3", "\t4",        "0x10",        "-"};
    constexpr const char* LIMITS[] = {"wtime",     "btime",  "winc",       "binc",  "movestogo",
                                      "movetime",  "nodes",  "ponder",     "mate",  "searchmoves",
                                      "movestogo", "wtimex", "infinitely", "Depth", "depthx"};
    constexpr const char* NAMES[] = {"MultiPV", "OwnBook", "BookFile", "Style",  "SyzygyPath",
                                     "Threads", "hash",    "MultiPVs", "Ponder", "value"};
    constexpr const char* VALUES[] = {"true", "Linear", "PeSTO", "<empty>", "/nowhere/at all",
                                      "2",    "-7",     "",      "name",    "99999999999"};
    constexpr const char* WORDS[] = {"uci",   "isready",   "ucinewgame", "stop",
                                     "d",     "eval",      "dupcheck",   "illegalcheck",
                                     "quit",  "setoption", "position",   "position startpos",
                                     "perft", "perft\t",   "bench 1",    "bench1x"};
    std::string line = "go";
    switch (below(random, 6)) {
    case 0:
        for (int count = below(random, 8); count > 0; --count)
            line += one_of(random, {" ", "  ", "\t"}) + one_of(random, LIMITS) + " " +
                    one_of(random, NUMBERS);
        return line + " depth " + one_of(random, {"1", "2", "3", "+2"});
    case 1:
        return "setoption " + one_of(random, {"name ", "name", "nam ", ""}) +
               one_of(random, NAMES) + one_of(random, {" value ", " value", "value", " "}) +
               one_of(random, VALUES);
    case 2:
        return "setoption name Hash value " + one_of(random, {"0", "-5", "1", "2", "x", "3x", ""});
    case 3:
        return one_of(random, {"position ", "position  ", "position\t", "Position "}) +
               one_of(random, {"startpos", "startpos ", "fen ", "fen", "startpo", ""}) +
               random_moves(random) + random_moves(random);
    case 4:
        return random_bytes(random, below(random, 200));
    default:
        return one_of(random, WORDS) + one_of(random, {"", "", "", "", " ", "x", "\r", "\xff"});
    }
}

TEST(MalformedInput, AnyCommandLineIsSafe) {
    constexpr int LINES = 2000;
    Random random(1811);
    Position position;
    position_set_fen(position, starting_fen);
    for (int i = 0; i < LINES && !testing::Test::HasFailure(); ++i) {
        const std::string line = random_command(random);
        SCOPED_TRACE(testing::PrintToString(line));
        run(line, position);
        EXPECT_TRUE(views_agree(position));
        EXPECT_EQ(run("isready", position), "readyok\n");
    }
    // Nothing of it has left a trace that default options and a new game do not remove.
    for (const char* const line :
         {"setoption name Hash value 64", "setoption name MultiPV value 1",
          "setoption name Style value PeSTO", "setoption name OwnBook value false", "ucinewgame"})
        EXPECT_EQ(run(line, position), "");
    EXPECT_NE(run("bench 4", position).find("Nodes   : 6618\n"), std::string::npos);
}

// The same through the front door: noise with line ends and NUL bytes in it, in one stream.
TEST(MalformedInput, NoiseOnStandardInputIsSurvived) {
    Random random(77);
    std::string noise;
    for (int i = 0; i < 200'000; ++i)
        noise += static_cast<char>(below(random, 256));
    EngineProcess engine;
    engine.send_text("go depth 3\n" + noise + "\n");
    engine.send_text("go depth 6\n" + noise + "\nisready\n");
    const std::vector<std::string> lines = engine.finish();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "readyok");
}

} // namespace
} // namespace brindlemoth
