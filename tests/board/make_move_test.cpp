#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(MakeMove, KeepsEveryFieldExactOverRandomPositions) {
    for_random_positions(10000, 11, [](Position& position) {
        const Position before = position;
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        for (const Move* move = moves; move != end; ++move) {
            SCOPED_TRACE(move_to_text(*move));
            const int moved = position.board[move_from(*move)];
            make_move(position, *move);
            ASSERT_TRUE(views_agree(position));
            ASSERT_EQ(position.key, compute_key(position));
            ASSERT_EQ(position.pawn_key, compute_pawn_key(position));
            ASSERT_EQ(position.psq, compute_psq(position));
            const bool zeroing = is_capture(*move) || piece_type(moved) == PAWN;
            ASSERT_EQ(position.halfmove, zeroing ? 0 : before.halfmove + 1);
            ASSERT_EQ(position.fullmove, before.fullmove + (before.side == BLACK ? 1 : 0));
            unmake_move(position, *move);
            ASSERT_TRUE(same_position(position, before));
        }
        make_null_move(position);
        ASSERT_EQ(position.key, compute_key(position));
        ASSERT_EQ(position.ep_square, NO_SQUARE);
        ASSERT_EQ(position.halfmove, before.halfmove + 1);
        ASSERT_EQ(position.fullmove, before.fullmove);
        unmake_null_move(position);
        ASSERT_TRUE(same_position(position, before));
    });
}

TEST(MakeMove, CastlingRights) {
    struct Row {
        const char* fen;
        Move move;
        int rights_after;
    };
    const Row rows[] = {
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", make_move_code(H1, H8, FLAG_CAPTURE), 2 | 8},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", make_move_code(A1, A8, FLAG_CAPTURE), 1 | 4},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", make_move_code(E1, E2, FLAG_QUIET), 4 | 8},
        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", make_move_code(E1, G1, FLAG_SHORT_CASTLING),
         4 | 8},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", make_move_code(E8, C8, FLAG_LONG_CASTLING), 1 | 2},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", make_move_code(A8, A2, FLAG_QUIET), 1 | 2 | 4},
    };
    for (const Row& row : rows) {
        Position position = position_from(row.fen);
        make_move(position, row.move);
        EXPECT_EQ(position.castling, row.rights_after) << move_to_text(row.move);
    }
}

} // namespace
} // namespace brindlemoth
