#include "board/bitboard.h"
#include "board/make_move.h"
#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/king_safety.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"
#include "eval_support.h"
#include "support/support.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(Evaluate, KnownValues) {
    const struct {
        const char* fen;
        int phase, by_style[2];
    } cases[] = {
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 24, {20, 20}},
        {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", 24, {20, 20}},
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 24, {54, -48}},
        {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 4, {-31, -28}},
        {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 24, {166, 270}},
        {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 24, {245, 322}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fen);
        for (const int style : {1, 0}) { // ends in the style that the other tests expect
            eval_style = style;
            init_eval_tables();
            const Position position = position_from(c.fen);
            EXPECT_EQ(evaluate(position), c.by_style[style]) << "style " << style;
            EXPECT_EQ(game_phase(position), c.phase);
        }
    }
}

int distance(int a, int b) {
    return std::max(std::abs(file_of(a) - file_of(b)), std::abs(rank_of(a) - rank_of(b)));
}

// The extras of one colour's passed pawns, square by square.
int passed_extras(const Position& position, int colour) {
    const int forward = colour == WHITE ? 8 : -8;
    const auto piece_at = [&](int square) { return position.board[square]; };
    const auto on_board = [](int square) { return square >= 0 && square < SQUARE_COUNT; };
    const int own_king = lowest_square(position.pieces[colour][KING]);
    const int enemy_king = lowest_square(position.pieces[colour ^ 1][KING]);
    const bool bare = popcount(position.occupied[colour ^ 1]) == 1;

    int extras = 0;
    for (int pawn = 0; pawn < SQUARE_COUNT; ++pawn) {
        bool passed = piece_at(pawn) == make_piece(colour, PAWN);
        for (int square = pawn + forward; on_board(square); square += forward)
            for (int file = std::max(0, file_of(pawn) - 1); file <= std::min(7, file_of(pawn) + 1);
                 ++file)
                passed &=
                    piece_at(make_square(file, rank_of(square))) != make_piece(colour ^ 1, PAWN);
        if (!passed)
            continue;
        const int rank = colour == WHITE ? rank_of(pawn) : 7 - rank_of(pawn);
        extras += ((8 * distance(enemy_king, pawn) - 5 * distance(own_king, pawn)) * rank) / 6;
        bool own_behind = false, enemy_behind = false;
        for (int square = pawn - forward; on_board(square); square -= forward) {
            for (const int type : {ROOK, QUEEN}) {
                own_behind |= piece_at(square) == make_piece(colour, type);
                enemy_behind |= piece_at(square) == make_piece(colour ^ 1, type);
            }
        }
        extras += own_behind ? 3 * rank : 0;
        extras -= enemy_behind ? 5 * rank : 0;
        const int promotion = make_square(file_of(pawn), colour == WHITE ? 7 : 0);
        const int steps = 7 - rank - (rank == 1 ? 1 : 0);
        const int chase = distance(enemy_king, promotion) - (position.side != colour ? 1 : 0);
        extras += bare && chase > steps ? 600 : 0;
    }
    return extras;
}

// The value of a position that is not dead, put together from single terms and the given extras.
int assemble(const Position& position, int extras) {
    const auto difference = [&](Score (*term)(const Position&, int)) {
        return term(position, WHITE) - term(position, BLACK);
    };
    Score sum = position.psq + evaluate_pawns(position) + difference(evaluate_mobility) +
                difference(evaluate_outposts) + difference(evaluate_rooks) +
                difference(evaluate_threats);
    sum += popcount(position.pieces[WHITE][BISHOP]) >= 2 ? S(22, 30) : Score{};
    sum -= popcount(position.pieces[BLACK][BISHOP]) >= 2 ? S(22, 30) : Score{};
    sum += make_score(king_danger(position, BLACK) - king_danger(position, WHITE), 0);
    sum += Score{65536} * extras;
    const int phase = game_phase(position);
    int value = (mg_value(sum) * phase + eg_value(sum) * (24 - phase)) / 24;
    value += position.side == WHITE ? 20 : -20;
    value += endgame_bonus(position);
    value = value * endgame_scale(position, value) / 256;
    return position.side == WHITE ? value : -value;
}

TEST(Evaluate, IsTheSumOfItsTerms) {
    int compared = 0;
    const auto compare = [&](Position& position) {
        const bool maybe_dead = (position.pieces[WHITE][PAWN] | position.pieces[WHITE][ROOK] |
                                 position.pieces[WHITE][QUEEN] | position.pieces[BLACK][PAWN] |
                                 position.pieces[BLACK][ROOK] | position.pieces[BLACK][QUEEN]) == 0;
        if (maybe_dead)
            return;
        ++compared;
        // What is kept of a value serves neither the other side nor another sum of placement where
        // they differ.
        for (int turn = 0; turn < 3; ++turn) {
            const int extras = passed_extras(position, WHITE) - passed_extras(position, BLACK);
            ASSERT_EQ(evaluate(position), assemble(position, extras)) << turn;
            if (turn == 0)
                make_null_move(position);
            else
                position.psq += make_score(40, -20);
        }
        position.psq -= make_score(80, -40);
        unmake_null_move(position);
    };
    for_random_positions(5000, 51, compare);
    for_random_placements(5000, 52, 24, compare);
    for_random_placements(5000, 52, 5, compare);
    EXPECT_GT(compared, 12000);
}

TEST(Evaluate, MirroredPositionsDifferByOneAtMost) {
    int compared = 0;
    const auto compare = [&](Position& position) {
        const Position mirror = mirrored(position);
        ASSERT_EQ(evaluate_pawns(position), -evaluate_pawns(mirror));
        ASSERT_EQ(endgame_bonus(position), -endgame_bonus(mirror));
        // King danger tells several queens apart by their squares, and is no mirror image then.
        if (more_than_one(position.pieces[WHITE][QUEEN]) ||
            more_than_one(position.pieces[BLACK][QUEEN]))
            return;
        ++compared;
        ASSERT_LE(std::abs(evaluate(position) - evaluate(mirror)), 1);
    };
    for_random_positions(5000, 53, compare);
    for_random_placements(5000, 54, 16, compare);
    EXPECT_GT(compared, 8000);
}

TEST(Evaluate, BoardsThatNoGameReaches) {
    EXPECT_EQ(evaluate(position_from("8/8/8/8/8/8/8/8 w - - 0 1")), 0);
    EXPECT_EQ(evaluate(position_from("8/8/8/3Q4/8/8/8/4K3 w - - 0 1")), 0);
    EXPECT_EQ(evaluate(position_from("4k3/8/8/3Q4/8/8/8/8 b - - 0 1")), 0);
}

} // namespace
} // namespace brindlemoth
