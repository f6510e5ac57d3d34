// The probe board against the engine's own board, and the material keys.

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/support.h"
#include "tablebase/registry.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace brindlemoth;

static ProbeMove probe_move(Move move) {
    return make_probe_move(move_from(move), move_to(move),
                           is_promotion(move) ? int{PROMOTE_QUEEN} + QUEEN - promoted_type(move)
                                              : PROMOTE_NONE);
}

// The en-passant square that a double step leaves when it counts only with a capturer at hand.
static int useful_ep_square(const Position& position) {
    if (position.ep_square == NO_SQUARE)
        return 0;
    const Bitboard capturers = pawn_attacks[position.side ^ 1][position.ep_square];
    return (capturers & position.pieces[position.side][PAWN]) != 0 ? position.ep_square : 0;
}

// Positions of whole games have more men than a table, but the rules are the same ones. The order
// of the moves counts, for it decides between equal moves at the root.
TEST(ProbeBoard, PlaysLikeTheEngine) {
    for_random_positions(20000, 4, [](Position& position) {
        if (popcount(position.all_pieces) > 24)
            return; // beyond the room of a list
        position.castling = 0;
        const ProbeBoard board = board_of(position);
        const std::string text = board_text(board);
        ASSERT_TRUE(board_is_sane(board)) << text;
        ASSERT_EQ(board.ep_square, position.ep_square == NO_SQUARE ? 0 : position.ep_square);
        ASSERT_EQ(board_in_check(board), in_check(position)) << text;

        const std::vector<Move> moves = moves_in_root_order(position);
        ProbeMove list[256];
        ASSERT_EQ(board_legal_moves(board, list), list + moves.size()) << text;
        ASSERT_EQ(board_has_legal_move(board), !moves.empty()) << text;
        ASSERT_EQ(board_is_mate(board), moves.empty() && in_check(position)) << text;
        for (std::size_t i = 0; i < moves.size(); ++i) {
            ASSERT_EQ(list[i], probe_move(moves[i])) << text;
            ASSERT_EQ(board_moved_type(board, list[i]),
                      piece_type(position.board[move_from(moves[i])]) + 1);
            ProbeBoard played;
            ASSERT_TRUE(board_play(played, board, list[i]));
            make_move(position, moves[i]);
            ProbeBoard expected = board_of(position);
            expected.ep_square = static_cast<std::uint8_t>(useful_ep_square(position));
            ASSERT_EQ(board_text(played), board_text(expected)) << text;
            unmake_move(position, moves[i]);
        }

        // The captures are the moves that reduce the number of men.
        std::vector<ProbeMove> expected;
        const ProbeMove* const end = board_moves(board, list);
        for (const ProbeMove* move = list; move != end; ++move) {
            ProbeBoard next;
            board_play(next, board, *move);
            if (popcount(next.white | next.black) < popcount(board.white | board.black))
                expected.push_back(*move);
        }
        ProbeMove captures[256];
        ProbeMove* const captures_end = board_captures(board, captures);
        ASSERT_EQ(std::vector<ProbeMove>(captures, captures_end), expected) << text;
    });
}

TEST(ProbeBoard, SanityOfPositions) {
    for (const char* const fen : {"8/8/8/4k3/8/4K3/8/Q7 b - - 0 1", "8/8/8/4k3/8/4K3/8/8 w - - 0 1",
                                  "8/8/8/R3k3/8/4K3/8/8 b - - 0 1"})
        EXPECT_TRUE(board_is_sane(board_from(fen))) << fen;
    for (const char* const fen : {
             "8/8/8/4k3/4K3/8/8/Q7 b - - 0 1",  // kings touch
             "8/8/8/8/8/4K3/8/Q7 w - - 0 1",    // no black king
             "8/8/8/4k3/8/4K3/8/Q6K w - - 0 1", // two white kings
             "P7/8/8/4k3/8/4K3/8/8 w - - 0 1",  // pawn on the last rank
             "8/8/8/4k3/8/4K3/8/p7 w - - 0 1",  // pawn on the first
             "8/8/8/R3k3/8/4K3/8/8 w - - 0 1",  // the side not to move is in check
         })
        EXPECT_FALSE(board_is_sane(board_from(fen))) << fen;

    // What no position can hold: two men on a square, a man of no colour, a square of two colours.
    ProbeBoard bad[3];
    std::fill(bad, bad + 3, board_from("8/8/8/4k3/8/4K3/8/Q7 b - - 0 1"));
    bad[0].rooks |= bad[0].queens;
    bad[1].knights |= square_bit(H8);
    bad[2].black |= square_bit(A1);
    for (const ProbeBoard& board : bad)
        EXPECT_FALSE(board_is_sane(board)) << board_text(board);
}

TEST(MaterialKey, OfBoards) {
    EXPECT_EQ(board_material_key(board_from("8/8/8/4k3/8/4K3/8/8 w - - 0 1"), true), 0U);
    EXPECT_EQ(board_material_key(board_from("8/8/8/4k3/8/4K3/8/QN6 w - - 0 1"), false),
              0xA3EC1ABC71E90863ULL + 0xD2FB81862830191FULL);

    // A board, and the same with the colours exchanged; its signature and the counts of that.
    for (const std::string& signature : signatures_of(4)) {
        ProbeBoard board = empty_board(true);
        int counts[16];
        count_signature_men(signature.c_str(), counts);
        int square = A3;
        for (const Man man : signature_men(signature))
            put_man(board, man, square++);
        for (const bool mirror : {false, true}) {
            const ProbeBoard seen = mirror ? colours_exchanged(board) : board;
            char name[16];
            board_material_name(seen, name, mirror);
            EXPECT_EQ(name, signature);
            EXPECT_EQ(board_material_key(seen, mirror), material_key_of_counts(counts, false));
            EXPECT_EQ(board_material_key(board, mirror), material_key_of_counts(counts, mirror));
        }
    }
}
