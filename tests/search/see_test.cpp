#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "search/see.h"
#include "support/support.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// A slow second opinion on a plain board of piece codes, without bitboards or attack tables.
using Board = std::array<int, 64>;

bool on_board(int file, int rank) {
    return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

// Whether the man on `from` reaches `to` over a board with these men on it.
bool reaches(const Board& board, int from, int to) {
    const int files = file_of(to) - file_of(from);
    const int ranks = rank_of(to) - rank_of(from);
    const int far = std::max(std::abs(files), std::abs(ranks));
    const bool diagonal = std::abs(files) == std::abs(ranks);
    const bool straight = files == 0 || ranks == 0;
    if (far == 0)
        return false;
    switch (piece_type(board[static_cast<std::size_t>(from)])) {
    case PAWN:
        return far == 1 && diagonal &&
               ranks == (piece_colour(board[static_cast<std::size_t>(from)]) == WHITE ? 1 : -1);
    case KNIGHT:
        return std::abs(files * ranks) == 2;
    case KING:
        return far == 1;
    case BISHOP:
        if (!diagonal)
            return false;
        break;
    case ROOK:
        if (!straight)
            return false;
        break;
    default:
        if (!diagonal && !straight)
            return false;
    }
    for (int step = 1; step < far; ++step) {
        const int file = file_of(from) + files / far * step;
        const int rank = rank_of(from) + ranks / far * step;
        EXPECT_TRUE(on_board(file, rank));
        if (board[static_cast<std::size_t>(make_square(file, rank))] != EMPTY_SQUARE)
            return false;
    }
    return true;
}

constexpr int VALUES[] = {100, 300, 300, 500, 900, 20000};

// What `side` wins by taking a man of that worth on the square, or 0 if it had better not.
int best_gain(Board board, int square, int worth, int side) {
    int taker = NO_SQUARE;
    for (int from = A1; from <= H8; ++from) {
        const int piece = board[static_cast<std::size_t>(from)];
        if (piece == EMPTY_SQUARE || piece_colour(piece) != side || !reaches(board, from, square))
            continue;
        if (taker == NO_SQUARE ||
            piece_type(piece) < piece_type(board[static_cast<std::size_t>(taker)]))
            taker = from;
    }
    if (taker == NO_SQUARE)
        return 0;
    const int type = piece_type(board[static_cast<std::size_t>(taker)]);
    board[static_cast<std::size_t>(taker)] = EMPTY_SQUARE;
    return std::max(0, worth - best_gain(board, square, VALUES[type], side ^ 1));
}

int slow_see(const Position& position, Move move) {
    Board board;
    std::copy_n(position.board, 64, board.begin());
    const int victim = position.board[move_to(move)];
    const int mover = position.board[move_from(move)];
    board[static_cast<std::size_t>(move_from(move))] = EMPTY_SQUARE;
    return (victim == EMPTY_SQUARE ? 100 : VALUES[piece_type(victim)]) -
           best_gain(board, move_to(move), VALUES[piece_type(mover)], position.side ^ 1);
}

TEST(See, Examples) {
    const struct {
        const char* fen;
        Move move;
        int gain;
    } ROWS[] = {
        {"7k/8/8/3p4/8/8/8/K2R4 w - - 0 1", make_move_code(D1, D5, FLAG_CAPTURE), 100},
        {"7k/8/4p3/3q4/4P3/8/8/K7 w - - 0 1", make_move_code(E4, D5, FLAG_CAPTURE), 800},
        {"7k/8/4p3/3p4/8/8/8/K2R4 w - - 0 1", make_move_code(D1, D5, FLAG_CAPTURE), -400},
        {"7k/8/4p3/3n4/8/2N5/8/K7 w - - 0 1", make_move_code(C3, D5, FLAG_CAPTURE), 0},
        // A queen behind the rook takes part, so the recapture gains nothing.
        {"3r3k/8/8/3p4/8/8/3R4/K2Q4 w - - 0 1", make_move_code(D2, D5, FLAG_CAPTURE), 100},
        // The king does not recapture into a rook's reach, but does when alone.
        {"8/8/4k3/3p4/8/2N5/8/K2R4 w - - 0 1", make_move_code(C3, D5, FLAG_CAPTURE), 100},
        {"8/8/4k3/3p4/8/2N5/8/K7 w - - 0 1", make_move_code(C3, D5, FLAG_CAPTURE), -200},
        // A quiet promotion starts as if it took a pawn, and stays a pawn.
        {"8/4P1p1/8/8/8/8/7k/K7 w - - 0 1", make_move_code(E7, E8, FLAG_PROMOTION + 3), 100},
        {"8/8/8/8/4p3/8/3P4/K6k w - - 0 1", make_move_code(D2, D3, FLAG_QUIET), 0},
        {"7k/8/8/3pP3/8/8/8/K7 w - d6 0 1", make_move_code(E5, D6, FLAG_EN_PASSANT), 100},
        {"7k/2p5/8/3pP3/8/8/8/K7 w - d6 0 1", make_move_code(E5, D6, FLAG_EN_PASSANT), 0},
        // The first capture is forced, even with a king into a pawn's reach.
        {"7k/2p5/3p4/2K5/8/8/8/8 w - - 0 1", make_move_code(C5, D6, FLAG_CAPTURE), -19900},
        {"7k/8/8/8/8/2K5/8/8 w - - 0 1", make_move_code(C3, C4, FLAG_QUIET), 100},
        // Of two queens the one on the lower square takes: from c4 it would uncover the bishop,
        // so White had better not; from d1 it uncovers nothing.
        {"7k/8/5n2/3P3Q/2Q5/1b6/8/K7 b - - 0 1", make_move_code(F6, D5, FLAG_CAPTURE), 100},
        {"7k/8/5n2/3P4/2Q5/1b6/8/K2Q4 b - - 0 1", make_move_code(F6, D5, FLAG_CAPTURE), -200},
    };
    for (const auto& row : ROWS) {
        const Position position = position_from(row.fen);
        EXPECT_EQ(see(position, row.move), row.gain) << row.fen;
        EXPECT_EQ(slow_see(position, row.move), row.gain) << row.fen;
    }
}

TEST(See, AgreesWithExchangesPlayedOnAPlainBoard) {
    int negative = 0;
    for_random_positions(5000, 41, [&](Position& position) {
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        for (const Move* move = moves; move != end; ++move) {
            const int gain = see(position, *move);
            negative += gain < 0 ? 1 : 0;
            ASSERT_EQ(gain, slow_see(position, *move)) << move_to_text(*move);
        }
    });
    EXPECT_GT(negative, 1000);
}

// Boards that no game reaches: long exchanges, several kings, men of both sides everywhere.
TEST(See, CrowdedBoards) {
    for (const char* const fen : {
             "qQqQqQqQ/QqQqQqQq/qQqQqQqQ/QqQqQqQq/qQqQ1QqQ/QqQqQqQq/qQqQqQqK/QqQqQqkQ w - - 0 1",
             "QQQQQQQQ/QqqqqqqQ/QqqqqqqQ/QqqqrqqQ/Qqqr1rqQ/QqqqrqqQ/QqqqqqqQ/KQQQQQQk b - - 0 1",
             "kKkKkKkK/KkKkKkKk/kKkK1kKk/KkKkKkKk/kKkKkKkK/KkKkKkKk/8/8 w - - 0 1",
             "n1n1k1n1/PPPPPPPP/1n3n2/pppppppp/PPPPPPPP/1N3N2/pppppppp/N1N1K1N1 w - - 0 1",
             "n1n1k1n1/PPPPPPPP/1n3n2/pppppppp/PPPPPPPP/1N3N2/pppppppp/N1N1K1N1 b - - 0 1",
         }) {
        const Position position = position_from(fen);
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        ASSERT_NE(end, moves);
        for (const Move* move = moves; move != end; ++move)
            EXPECT_EQ(see(position, *move), slow_see(position, *move)) << fen << *move;
    }
}

} // namespace
} // namespace brindlemoth
