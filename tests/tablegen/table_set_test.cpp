// A whole directory of tables through the engine's reader: random positions of all signatures
// against a search of one ply over the same tables, and wins played out to mate. The directory is
// that of the environment variable TABLES, or one with tables of three men made here; POSITIONS and
// WINS say how many.
#include "board/fen.h"
#include "board/make_move.h"
#include "board/position.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/solved_table.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

using namespace brindlemoth;

constexpr int FIFTY_MOVES_PLIES = 100;

struct TableSetFiles : testing::Test {
    TemporaryDirectory made;
    std::vector<std::string> signatures; // that have both files
    std::mt19937 random{1};

    void SetUp() override {
        const char* const given = std::getenv("TABLES");
        if (given == nullptr)
            for (const std::string& name : signatures_of(3))
                write_files(solved_table(name), made.path);
        const std::filesystem::path directory = given != nullptr ? given : made.path;
        syzygy_init(directory.string().c_str());
        for (const std::string& name : all_signatures())
            if (std::filesystem::exists(directory / (name + ".rtbw")) &&
                std::filesystem::exists(directory / (name + ".rtbz")))
                signatures.push_back(name);
        ASSERT_FALSE(signatures.empty());
        std::printf("%zu signatures\n", signatures.size());
    }
    void TearDown() override { syzygy_init(""); }
};

// Where a distance may lie, in plies: a stream that counts moves leaves one open. Positive for a
// win, negative for a loss, 0 for a draw; `low` is nearer to 0.
struct Distance {
    bool read = false;
    int low = 0;
    int high = 0;
};

static long number_from_environment(const char* name, long otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::strtol(text, nullptr, 10) : otherwise;
}

// What the tables say of a board. Not read if a probe fails, or if WDL and DTZ disagree.
static Distance read_distance(const ProbeBoard& board) {
    int wdl_success = 0;
    int dtz_success = 0;
    const int wdl = syzygy_wdl(board, wdl_success);
    const int dtz = syzygy_dtz(board, dtz_success);
    const int sign = (wdl > 0) - (wdl < 0);
    const bool within = std::abs(dtz) <= FIFTY_MOVES_PLIES;
    if (wdl_success == 0 || dtz_success == 0 || sign != (dtz > 0) - (dtz < 0) ||
        (sign != 0 && within != (std::abs(wdl) == 2)))
        return {};
    // No distance is stored a ply short where that would lead across the fifty-move line.
    const bool exact = dtz == 0 || std::abs(dtz) == FIFTY_MOVES_PLIES;
    return {true, dtz, exact ? dtz : dtz + sign};
}

// The distance of a board by those after its moves.
static Distance distance_of_moves(const ProbeBoard& board) {
    ProbeMove list[MAX_PROBE_MOVES];
    const ProbeMove* const end = board_legal_moves(board, list);
    if (end == list)
        return {true, board_in_check(board) ? -1 : 0, board_in_check(board) ? -1 : 0};
    // Short wins before long ones, then draws, then long losses before short ones.
    const auto worth = [](int distance) {
        return distance > 0 ? 10000 - distance : distance < 0 ? -10000 - distance : 0;
    };
    Distance best;
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        board_play(next, board, *move);
        const bool mates = board_is_mate(next);
        const Distance after = read_distance(next);
        if (!after.read)
            return {};
        const auto before = [&](int distance) {
            const int saved = std::abs(distance) > FIFTY_MOVES_PLIES ? FIFTY_MOVES_PLIES : 0;
            const int plies = mates ? 1 : next.halfmove == 0 ? saved + 1 : std::abs(distance) + 1;
            return distance == 0 ? 0 : distance < 0 ? plies : -plies;
        };
        const int low = before(after.low);
        const int high = before(after.high);
        if (!best.read || worth(low) > worth(best.low))
            best.low = low;
        if (!best.read || worth(high) > worth(best.high))
            best.high = high;
        best.read = true;
    }
    return best;
}

TEST_F(TableSetFiles, EveryValueFollowsFromThoseAfterItsMoves) {
    const long positions = number_from_environment("POSITIONS", 20000);
    long wrong = 0;
    for (long i = 0; i < positions; ++i) {
        const auto name = static_cast<std::size_t>(i) % signatures.size();
        const ProbeBoard board = random_board(signatures[name], random);
        const Distance read = read_distance(board);
        const Distance judged = distance_of_moves(board);
        const auto [read_least, read_most] = std::minmax(read.low, read.high);
        const auto [judged_least, judged_most] = std::minmax(judged.low, judged.high);
        const bool right =
            read.read && judged.read && read_least <= judged_most && judged_least <= read_most;
        if (!right && wrong++ < 10)
            ADD_FAILURE() << board_text(board) << ": read " << read.low << ", judged " << judged.low
                          << " to " << judged.high;
    }
    EXPECT_EQ(wrong, 0);
    std::printf("%ld positions, %ld wrong\n", positions, wrong);
}

// Both sides play the move that the tables choose. The fifty-move rule must not come in between.
TEST_F(TableSetFiles, WinsAreWonToMate) {
    const long wins = number_from_environment("WINS", 200);
    long longest = 0;
    std::size_t next = 0;
    for (long won = 0; won < wins; ++next) {
        const ProbeBoard board = random_board(signatures[next % signatures.size()], random);
        int success = 0;
        if (syzygy_wdl(board, success) != WDL_WIN || success == 0 || !board_has_legal_move(board))
            continue;
        const std::string start = board_text(board);
        static Position position;
        ASSERT_TRUE(position_set_fen(position, start.c_str()));
        long plies = 0;
        Move move = MOVE_NONE;
        while (syzygy_root_move(position, move) && move != MOVE_NONE) {
            make_move(position, move);
            ++plies;
            // A new record, which has room for as many moves again.
            const std::string here = board_text(board_of(position));
            ASSERT_LE(position.halfmove, FIFTY_MOVES_PLIES) << start << ", now " << here;
            ASSERT_TRUE(position_set_fen(position, here.c_str()));
        }
        EXPECT_TRUE(board_is_mate(board_of(position)) && plies % 2 == 1)
            << start << " ends in " << board_text(board_of(position));
        longest = std::max(longest, plies);
        ++won;
    }
    std::printf("%ld wins, the longest of %ld plies\n", wins, longest);
}
