#include "board/attacks.h"
#include "board/bitboard.h"
#include "movegen/generate.h"
#include "search/see.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace brindlemoth;

// A slow second implementation: it makes one capture after the other and walks the rays each time.
constexpr int VALUES[] = {100, 300, 300, 500, 900, 20000};

// What `side` wins by capturing a piece of that value on the square, or 0 if it does not capture.
static int best_gain(const Position& position, Bitboard occupied, int square, int value, int side) {
    const Bitboard rook_rays = rook_attacks_slow(square, occupied);
    const Bitboard bishop_rays = bishop_attacks_slow(square, occupied);
    const Bitboard reach[] = {
        pawn_attacks[side ^ 1][square], knight_attacks[square], bishop_rays, rook_rays,
        rook_rays | bishop_rays,        king_attacks[square]};
    for (int type = PAWN; type <= KING; ++type)
        if (Bitboard takers = position.pieces[side][type] & reach[type] & occupied; takers != 0)
            return std::max(0, value - best_gain(position, occupied ^ (takers & -takers), square,
                                                 VALUES[type], side ^ 1));
    return 0;
}

static int slow_see(const Position& position, Move move) {
    const int victim = position.board[move_to(move)];
    const int mover = position.board[move_from(move)];
    const Bitboard occupied =
        (position.all_pieces & ~square_bit(move_from(move))) | square_bit(move_to(move));
    return (victim == EMPTY_SQUARE ? 100 : VALUES[piece_type(victim)]) -
           best_gain(position, occupied & ~square_bit(move_to(move)), move_to(move),
                     VALUES[piece_type(mover)], position.side ^ 1);
}

TEST(See, AgreesWithCapturesPlayedOnAPlainBoard) {
    int negative = 0;
    const auto compare = [&](Position& position) {
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        for (const Move* move = moves; move != end; ++move) {
            const int gain = see(position, *move);
            negative += gain < 0 ? 1 : 0;
            ASSERT_EQ(gain, slow_see(position, *move)) << move_to_text(*move);
        }
    };
    for_random_positions(2000, 41, compare);
    EXPECT_GT(negative, 500);
    // Captures by a king on an attacked square, two queens that can capture, and boards that no
    // game reaches, with long sequences of captures.
    for (const char* const fen :
         {"7k/2p5/3p4/2K5/8/8/8/8 w - - 0 1", "7k/8/5n2/3P3Q/2Q5/1b6/8/K7 b - - 0 1",
          "qQqQqQqQ/QqQqQqQq/qQqQqQqQ/QqQqQqQq/qQqQ1QqQ/QqQqQqQq/qQqQqQqK/QqQqQqkQ w - - 0 1",
          "QQQQQQQQ/QqqqqqqQ/QqqqqqqQ/QqqqrqqQ/Qqqr1rqQ/QqqqrqqQ/QqqqqqqQ/KQQQQQQk b - - 0 1",
          "n1n1k1n1/PPPPPPPP/1n3n2/pppppppp/PPPPPPPP/1N3N2/pppppppp/N1N1K1N1 w - - 0 1"}) {
        SCOPED_TRACE(fen);
        Position position = position_from(fen);
        ASSERT_NO_FATAL_FAILURE(compare(position));
    }
}
