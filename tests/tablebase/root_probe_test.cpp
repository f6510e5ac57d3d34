// The probes at known positions, and the move that the tables choose at the root.

#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/support.h"
#include "tablebase/probe.h"
#include "tablebase/root_probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {

namespace {

ProbeBoard board_of(const Position& position) {
    ProbeBoard board;
    board_from_position(position, board);
    return board;
}

struct RootProbe : testing::Test {
    void SetUp() override {
        SKIP_WITHOUT_TABLES();
        syzygy_init(syzygy_directory().c_str());
    }
    void TearDown() override { syzygy_init(""); }
};

int distance_after(const Position& root, Move move, int root_dtz) {
    Position position = root;
    make_move(position, move);
    const ProbeBoard board = board_of(position);
    int success;
    if (root_dtz > 0 && board_is_mate(board))
        return 1;
    if (position.halfmove == 0) {
        const int wdl = -syzygy_wdl(board, success);
        EXPECT_NE(success, PROBE_FAILED);
        return wdl == 0 ? 0 : (wdl > 0 ? 1 : -1) * (wdl == 2 || wdl == -2 ? 1 : 101);
    }
    const int dtz = -syzygy_dtz(board, success);
    EXPECT_NE(success, PROBE_FAILED);
    return dtz + (dtz > 0) - (dtz < 0);
}

bool is_legal(const Position& position, Move move) {
    Position copy = position;
    MoveList legal;
    generate_legal(copy, legal);
    return std::find(legal.moves, legal.moves + legal.count, move) != legal.moves + legal.count;
}

// The legal moves in the order in which the root goes through them: by man, from king to pawn.
std::vector<Move> moves_in_root_order(const Position& position) {
    Position copy = position;
    MoveList legal;
    generate_legal(copy, legal);
    std::vector<Move> moves(legal.moves, legal.moves + legal.count);
    const auto place = [&position](Move move) {
        constexpr int promotions[] = {1, 3, 2, 0}; // knight, bishop, rook, queen
        const int type = piece_type(position.board[move_from(move)]);
        const bool en_passant = move_flag(move) == FLAG_EN_PASSANT;
        const int promotion = is_promotion(move) ? promotions[promoted_type(move) - KNIGHT] : 0;
        return ((KING - type) * 64 + move_from(move)) * 512 +
               (en_passant ? 0 : move_to(move) * 4 + promotion + 1);
    };
    std::sort(moves.begin(), moves.end(), [&place](Move a, Move b) { return place(a) < place(b); });
    return moves;
}

} // namespace

TEST_F(RootProbe, KnownPositions) {
    const struct {
        const char* fen;
        int wdl;
        int success;
        int dtz;
    } cases[] = {
        {"k7/8/8/8/8/8/3qQ3/K7 w - - 0 1", 2, PROBE_GOOD_BY_CAPTURE, 1},
        {"k7/8/8/8/8/8/3qQ3/K7 b - - 0 1", 2, PROBE_GOOD_BY_CAPTURE, 1},
        {"8/8/8/3qK3/8/8/k7/8 w - - 0 1", 0, PROBE_GOOD, 0},
        {"8/8/1K6/8/1P6/8/8/k7 w - - 0 1", 2, PROBE_GOOD, 1},   // the pawn runs
        {"8/8/1K6/8/1P6/8/8/k7 w - - 77 90", 2, PROBE_GOOD, 1}, // the clock is no concern
        {"k7/8/1K6/8/8/8/8/7R w - - 0 1", 2, PROBE_GOOD, 1},    // mate in one
        {"k6R/8/1K6/8/8/8/8/8 b - - 0 1", -2, PROBE_GOOD, -1},  // mated
        {"k7/8/1K6/8/8/8/8/8 w - - 0 1", 0, PROBE_GOOD, 0},     // bare kings
        {"8/8/8/8/8/k7/8/KB6 w - - 0 1", 0, PROBE_GOOD, 0},
    };
    for (const auto& c : cases) {
        const ProbeBoard board = board_of(position_from(c.fen));
        int success;
        EXPECT_EQ(syzygy_wdl(board, success), c.wdl) << c.fen;
        EXPECT_EQ(success, c.success) << c.fen;
        EXPECT_EQ(syzygy_dtz(board, success), c.dtz) << c.fen;
        EXPECT_NE(success, PROBE_FAILED) << c.fen;
    }
}

// What a FEN may say and no game can: the move is legal all the same, or there is none.
TEST_F(RootProbe, OddFieldsOfAFen) {
    for (const char* const fen : {
             "8/5nK1/3kP3/8/8/8/8/8 w - d7 0 1", // the enemy king stands behind the square
             "8/8/8/4P3/8/8/k6K/8 w - d6 0 1",   // no pawn there
             "8/8/3N4/4P3/8/8/k6K/8 w - d6 0 1", // a man on the square
             "8/8/8/3rP3/8/8/k6K/8 w - d6 0 1",  // a rook behind it
             "8/8/8/8/8/8/kp5K/8 b - a1 0 1",    // the square whose number is 0
             "8/8/8/3pP3/8/8/k6K/8 w - d6 0 1",  // a true one
         }) {
        Position position = position_from(fen);
        Move move;
        ASSERT_TRUE(syzygy_root_move(position, move)) << fen;
        EXPECT_TRUE(is_legal(position, move)) << fen << ' ' << move_to_text(move);
    }
    // The clock has no say, not even where it would wrap.
    Move usual;
    Position rook = position_from("8/8/8/8/8/4k3/8/R3K3 w - - 0 1");
    ASSERT_TRUE(syzygy_root_move(rook, usual));
    for (const int clock : {1, 99, 255, 256, 100000}) {
        Position position = rook;
        position.halfmove = clock;
        Move move;
        ASSERT_TRUE(syzygy_root_move(position, move));
        EXPECT_EQ(move, usual) << clock;
    }
}

TEST_F(RootProbe, KeepsTheValueAndTheDistance) {
    std::mt19937 random(2024);
    std::vector<std::string> signatures = three_men_signatures();
    signatures.insert(signatures.end(), four_men_signatures().begin(), four_men_signatures().end());
    int decided = 0;
    for (int i = 0; i < 10000; ++i) {
        const ProbeBoard board = random_board(signatures[random() % signatures.size()], random);
        Position position = position_of(board);
        const Position before = position;
        Move chosen;
        ASSERT_TRUE(syzygy_root_move(position, chosen)) << board_text(board);
        ASSERT_EQ(position.key, before.key);
        const std::vector<Move> moves = moves_in_root_order(position);
        if (moves.empty()) {
            ASSERT_EQ(chosen, MOVE_NONE) << board_text(board);
            continue;
        }
        ASSERT_TRUE(is_legal(position, chosen)) << board_text(board);
        ++decided;

        int success;
        const int root_dtz = syzygy_dtz(board, success);
        std::vector<int> distances;
        for (const Move move : moves)
            distances.push_back(distance_after(position, move, root_dtz));
        std::size_t expected = moves.size();
        if (root_dtz == 0) {
            const auto draws = std::count(distances.begin(), distances.end(), 0);
            ASSERT_GT(draws, 0) << board_text(board);
            Key skip =
                board_material_key(board, board.white_to_move == 0) % static_cast<Key>(draws);
            for (std::size_t m = 0; m < moves.size() && expected == moves.size(); ++m) {
                if (distances[m] == 0 && skip-- == 0)
                    expected = m;
            }
        } else {
            for (std::size_t m = 0; m < moves.size(); ++m) {
                if ((distances[m] > 0) == (root_dtz > 0) && distances[m] != 0 &&
                    (expected == moves.size() || distances[m] < distances[expected]))
                    expected = m;
            }
        }
        ASSERT_LT(expected, moves.size()) << board_text(board);
        ASSERT_EQ(move_to_text(chosen), std::string(move_to_text(moves[expected])))
            << board_text(board);

        Position after = position;
        make_move(after, chosen);
        const int wdl = syzygy_wdl(board, success);
        ASSERT_EQ(-syzygy_wdl(board_of(after), success), wdl) << board_text(board);
    }
    EXPECT_GT(decided, 9000);
}

// Each move of the stronger side comes one ply nearer to the mate, and so does every answer.
TEST_F(RootProbe, RookMatesFromEverywhere) {
    int games = 0;
    unsigned number = 0;
    for_all_boards("KRvK", [&](const ProbeBoard& board) {
        int success;
        const int dtz = syzygy_dtz(board, success);
        if (dtz <= 0)
            return;
        Position position = position_of(board);
        Move move;
        // One move everywhere in the triangle a1-d1-d4, a whole game now and then.
        const int king = lowest_square(board_men(board, 1, PROBE_KING));
        if (file_of(king) > 3 || rank_of(king) > file_of(king))
            return;
        const bool whole_game = ++number % 97 == 0;
        int plies = 0;
        do {
            ASSERT_TRUE(syzygy_root_move(position, move)) << board_text(board);
            ASSERT_NE(move, MOVE_NONE) << board_text(board);
            make_move(position, move);
            ++plies;
            const ProbeBoard next = board_of(position);
            if (plies == dtz) {
                ASSERT_TRUE(board_is_mate(next)) << board_text(board);
                break;
            }
            const int left = syzygy_dtz(next, success);
            ASSERT_EQ((plies & 1) != 0 ? -left : left, dtz - plies) << board_text(board);
        } while (whole_game);
        games += whole_game ? 1 : 0;
    });
    EXPECT_GT(games, 200);
}

TEST_F(RootProbe, NoMoveToChoose) {
    const struct {
        const char* fen;
        bool answered;
        std::uint16_t root;
    } cases[] = {
        {"k6R/8/1K6/8/8/8/8/8 b - - 0 1", true, ROOT_MATED},
        {"7k/8/6QK/8/8/8/8/8 b - - 0 1", true, ROOT_STALEMATE},
        {"k7/8/8/8/8/8/8/KQRBN3 w - - 0 1", false, ROOT_FAILED}, // no table of 6 men
        {"k7/8/8/8/8/8/8/R6R w - - 0 1", false, ROOT_FAILED},    // no white king
    };
    for (const auto& c : cases) {
        Position position = position_from(c.fen);
        Move move = MOVE_NULL;
        EXPECT_EQ(syzygy_root_move(position, move), c.answered) << c.fen;
        EXPECT_EQ(move, MOVE_NONE) << c.fen;
        const ProbeBoard board = board_of(position);
        if (board_is_sane(board)) {
            EXPECT_EQ(syzygy_root(board), c.root) << c.fen;
        }
    }
}

} // namespace brindlemoth
