#include "board/make_move.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace brindlemoth {
namespace {

using Generator = Move* (*)(const Position&, Move*);

// The moves as text with their flags, "e2e4/1 ...", in the order generated.
std::string listed(const Position& position, Generator generate) {
    Move moves[MAX_MOVES];
    std::string text;
    const Move* const end = generate(position, moves);
    for (const Move* move = moves; move != end; ++move) {
        if (move != moves)
            text += ' ';
        text += move_to_text(*move);
        text += '/';
        text += std::to_string(move_flag(*move));
    }
    return text;
}

TEST(Generators, OrderOfEmission) {
    struct Row {
        const char* fen;
        Generator generate;
        const char* moves;
    };
    const Row rows[] = {
        {starting_fen, generate_pseudo_legal,
         "a2a3/0 b2b3/0 c2c3/0 d2d3/0 e2e3/0 f2f3/0 g2g3/0 h2h3/0 a2a4/1 b2b4/1 c2c4/1 d2d4/1 "
         "e2e4/1 f2f4/1 g2g4/1 h2h4/1 b1a3/0 b1c3/0 g1f3/0 g1h3/0"},
        // Promotions first, captures by their two directions, en passant last of the pawn moves.
        {"1n1n3k/2P5/8/3pPp2/8/8/8/K7 w - d6 0 1", generate_pseudo_legal,
         "c7c8q/11 c7c8r/10 c7c8b/9 c7c8n/8 e5e6/0 c7b8q/15 c7b8r/14 c7b8b/13 c7b8n/12 "
         "c7d8q/15 c7d8r/14 c7d8b/13 c7d8n/12 e5d6/5 a1b1/0 a1a2/0 a1b2/0"},
        // Captures of every piece, then the promoting pushes.
        {"1n5k/2P5/8/8/8/8/p7/KR6 w - - 0 1", generate_captures,
         "c7b8q/15 c7b8r/14 c7b8b/13 c7b8n/12 b1b8/4 a1a2/4 c7c8q/11 c7c8r/10 c7c8b/9 c7c8n/8"},
        {"7k/8/8/8/3pP3/8/8/K7 b - e3 0 1", generate_captures, "d4e3/5"},
        // Two capturers of one pawn, in ascending order.
        {"7k/8/8/2PpP3/8/8/8/K7 w - d6 0 1", generate_captures, "c5d6/5 e5d6/5"},
        // A named square without a pawn in front of it, or with a man on it, gives no capture.
        {"7k/8/8/2P1P3/8/8/8/K7 w - d6 0 1", generate_captures, ""},
        {"7k/8/3n4/2PpP3/8/8/8/K7 w - d6 0 1", generate_captures, "e5d6/4 c5d6/4"},
        {"7k/8/8/8/8/8/8/K6P w - h8 0 1", generate_captures, ""},
        {"r3k2r/8/8/8/8/8/8/8 b kq - 0 1", generate_quiets,
         "a8a1/0 a8a2/0 a8a3/0 a8a4/0 a8a5/0 a8a6/0 a8a7/0 a8b8/0 a8c8/0 a8d8/0 h8h1/0 h8h2/0 "
         "h8h3/0 h8h4/0 h8h5/0 h8h6/0 h8h7/0 h8f8/0 h8g8/0 e8d7/0 e8e7/0 e8f7/0 e8d8/0 e8f8/0 "
         "e8g8/2 e8c8/3"},
        // Castling needs its right, its men and a safe path.
        {"4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", generate_castling_moves, "e1g1/2 e1c1/3"},
        {"4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1", generate_castling_moves, "e1g1/2"},
        {"4k3/8/8/8/8/8/8/R3K2R w Q - 0 1", generate_castling_moves, "e1c1/3"},
        {"4kr2/8/8/8/8/8/8/R3K2R w KQ - 0 1", generate_castling_moves, "e1c1/3"}, // f1 attacked
        {"4kq2/8/8/8/8/4r3/8/R3K2R w KQ - 0 1", generate_castling_moves, ""},     // in check
        {"1r2k2r/8/8/8/8/8/8/R3K2R w KQ - 0 1", generate_castling_moves, "e1g1/2 e1c1/3"},
        {"4k3/8/8/8/8/8/8/3K3R w KQ - 0 1", generate_castling_moves, ""}, // king elsewhere
        {"4k3/8/8/8/8/8/8/R3K2N w KQ - 0 1", generate_castling_moves,
         "e1c1/3"}, // no rook in the corner
    };
    for (const Row& row : rows)
        EXPECT_EQ(listed(position_from(row.fen), row.generate), row.moves) << row.fen;
}

TEST(Generators, CapturesAndQuietsPartitionThePseudoLegalMoves) {
    for_random_positions(10000, 21, [](Position& position) {
        Move all[MAX_MOVES];
        Move parts[2 * MAX_MOVES];
        Move* const all_end = generate_pseudo_legal(position, all);
        Move* const parts_end = generate_quiets(position, generate_captures(position, parts));
        std::sort(all, all_end);
        std::sort(parts, parts_end);
        ASSERT_EQ(std::adjacent_find(all, all_end), all_end) << "a move came twice";
        ASSERT_TRUE(std::equal(all, all_end, parts, parts_end));
    });
}

// Whether the side to move attacks the square, by walking the rays and not by the lookups.
bool attacked_by_rays(const Position& position, int square) {
    const Bitboard* const by = position.pieces[position.side];
    const Bitboard all = position.all_pieces;
    return ((bishop_attacks_slow(square, all) & (by[BISHOP] | by[QUEEN])) |
            (rook_attacks_slow(square, all) & (by[ROOK] | by[QUEEN])) |
            (knight_attacks[square] & by[KNIGHT]) | (king_attacks[square] & by[KING]) |
            (pawn_attack_set(by[PAWN], position.side) & square_bit(square))) != 0;
}

// The test on a copy of the occupied squares says what playing the move would show.
TEST(Legality, EqualsPlayingTheMove) {
    const auto compare = [](Position& position) {
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        for (const Move* move = moves; move != end; ++move) {
            const bool legal = move_is_legal(position, *move);
            make_move(position, *move);
            const Bitboard king = position.pieces[position.side ^ 1][KING];
            const bool safe = king != 0 && !attacked_by_rays(position, lowest_square(king));
            unmake_move(position, *move);
            ASSERT_EQ(legal, safe) << move_to_text(*move);
        }
    };
    for_random_positions(10000, 41, compare);
    for (const char* fen : {
             "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1",   // castling
             "7k/8/8/K2pP2r/8/8/8/8 w - d6 0 1",       // en passant on the king's rank
             "7k/8/8/2KPp2q/8/8/8/B7 w - e6 0 1",      //
             "k6k/8/1q4K1/8/3K4/8/r5r1/K6K w - - 0 1", // several kings
             "8/8/8/3q4/8/8/3R4/8 w - - 0 1",          // none
             "3k4/3P4/8/8/8/8/3R4/3K4 w - - 0 1",      // the enemy king can be taken
             "1r1r3k/2P5/8/8/8/2K5/8/2r5 w - - 0 1",   // promotions that open and close lines
         }) {
        SCOPED_TRACE(fen);
        Position position = position_from(fen);
        compare(position);
    }
}

// Boards that no game reaches: the list stops at its capacity and holds no move twice.
TEST(Generators, SurplusMovesAreDropped) {
    for (const char* fen : {"QQQQQQQQ/8/Q6Q/Q6Q/Q6Q/Q6Q/Q6Q/QQQQKQQQ w - - 0 1",
                            "kqqqqqqq/q6q/q6q/q6q/q6q/q6q/8/qqqqqqqq b - - 0 1"}) {
        Position position = position_from(fen);
        struct {
            Move moves[MAX_MOVES], guard;
        } buffer{};
        buffer.guard = 0xABCD;
        ASSERT_EQ(generate_pseudo_legal(position, buffer.moves) - buffer.moves, MAX_MOVES) << fen;
        for (Generator generate : {generate_pseudo_legal, generate_captures, generate_quiets}) {
            const Move* const end = generate(position, buffer.moves);
            EXPECT_LE(end - buffer.moves, MAX_MOVES);
            EXPECT_EQ(std::set<Move>(std::begin(buffer.moves), const_cast<Move*>(end)).size(),
                      static_cast<std::size_t>(end - buffer.moves));
        }
        EXPECT_EQ(buffer.guard, 0xABCD);
        MoveList list;
        generate_legal(position, list);
        EXPECT_LE(list.count, MAX_MOVES);
    }
}

} // namespace
} // namespace brindlemoth
