#include "board/bitboard.h"
#include "board/keys.h"
#include "board/make_move.h"
#include "movegen/generate.h"
#include "movegen/legality.h"
#include "support/support.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

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
