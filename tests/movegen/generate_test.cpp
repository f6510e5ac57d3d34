#include "board/fen.h"
#include "board/make_move.h"
#include "movegen/generate.h"
#include "movegen/legality.h"
#include "movegen/perft.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

using namespace brindlemoth;

using Generator = Move* (*)(const Position&, Move*);

// The castling moves among all.
static Move* castling_moves(const Position& position, Move* out) {
    Move moves[MAX_MOVES];
    return std::copy_if(moves, generate_pseudo_legal(position, moves), out, is_castling);
}

// The moves as text with their flags, "e2e4/1 ...", in the order generated.
static std::string listed(const Position& position, Generator generate) {
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
        {"7k/8/8/8/3pP3/8/8/K7 b - e3 0 1", generate_captures, "d4e3/5"},
        // Two capturers of one pawn, in ascending order.
        {"7k/8/8/2PpP3/8/8/8/K7 w - d6 0 1", generate_captures, "c5d6/5 e5d6/5"},
        // A named square without a pawn in front of it, or with a man on it, gives no capture.
        {"7k/8/8/2P1P3/8/8/8/K7 w - d6 0 1", generate_captures, ""},
        {"7k/8/3n4/2PpP3/8/8/8/K7 w - d6 0 1", generate_captures, "e5d6/4 c5d6/4"},
        {"7k/8/8/8/8/8/8/K6P w - h8 0 1", generate_captures, ""},
        // Castling needs its men at home, whatever the FEN says.
        {"4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", castling_moves, "e1g1/2 e1c1/3"},
        {"4k3/8/8/8/8/8/8/3K3R w KQ - 0 1", castling_moves, ""},
        {"4k3/8/8/8/8/8/8/R3K2N w KQ - 0 1", castling_moves, "e1c1/3"},
        // An attack matters on the squares of the king, the last one too, not beside the rook.
        {"2r1k1r1/8/8/8/8/8/8/R3K2R w KQ - 0 1", castling_moves, ""},
        {"r3k2r/8/8/8/8/8/8/2R1K1R1 b kq - 0 1", castling_moves, ""},
        {"1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", castling_moves, "e1g1/2 e1c1/3"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(listed(position_from(row.fen), row.generate), row.moves) << row.fen;
}

// Whether the side to move attacks the square, by walking the rays and not by the lookups.
static bool attacked_by_rays(const Position& position, int square) {
    const Bitboard* const by = position.pieces[position.side];
    const Bitboard all = position.all_pieces;
    return ((bishop_attacks_slow(square, all) & (by[BISHOP] | by[QUEEN])) |
            (rook_attacks_slow(square, all) & (by[ROOK] | by[QUEEN])) |
            (knight_attacks[square] & by[KNIGHT]) | (king_attacks[square] & by[KING]) |
            (pawn_attack_set(by[PAWN], position.side) & square_bit(square))) != 0;
}

// Both tests of a move, and the count without writing them, say what playing the moves would show.
TEST(Legality, EqualsPlayingTheMove) {
    const auto compare = [](Position& position) {
        const LegalityMasks masks = legality_masks(position);
        ASSERT_EQ(masks.checkers != 0, in_check(position));
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        int safe_moves = 0;
        for (const Move* move = moves; move != end; ++move) {
            const bool legal = move_is_legal(position, *move);
            ASSERT_EQ(move_is_legal(position, masks, *move), legal) << move_to_text(*move);
            make_move(position, *move);
            const Bitboard king = position.pieces[position.side ^ 1][KING];
            const bool safe = king != 0 && !attacked_by_rays(position, lowest_square(king));
            unmake_move(position, *move);
            ASSERT_EQ(legal, safe) << move_to_text(*move);
            safe_moves += safe ? 1 : 0;
        }
        ASSERT_EQ(count_legal(position), safe_moves);
    };
    for_random_positions(10000, 41, compare);
    std::vector<std::string> fens = {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1",
                                     "7k/8/8/K2pP2r/8/8/8/8 w - d6 0 1",
                                     "7k/8/8/2KPp2q/8/8/8/B7 w - e6 0 1"};
    // Kings in any number, pawns on any rank, en passant anywhere.
    constexpr std::string_view MEN = "1111111111111111111111111111PPNBRQKppnbrqk";
    std::mt19937_64 random(42);
    std::generate_n(std::back_inserter(fens), 5000, [&] { return strewn_fen(random, MEN); });
    for (const std::string& fen : fens) {
        SCOPED_TRACE(fen);
        Position position = position_from(fen);
        ASSERT_NO_FATAL_FAILURE(compare(position));
    }
}

// One move too many, and many: the list stops at its capacity and holds no move twice.
TEST(Generators, SurplusMovesAreDropped) {
    for (const char* fen : {"Q4QQ1/3Q3Q/1Q5Q/4Q2Q/2Q4Q/Q6Q/3Q4/1Q3QQQ w - - 0 1",
                            "kqqqqqqq/q6q/q6q/q6q/q6q/q6q/8/qqqqqqqq b - - 0 1"}) {
        Position position = position_from(fen);
        struct {
            Move moves[MAX_MOVES], guard;
        } buffer{{}, 0xABCD};
        for (Generator generate : {generate_pseudo_legal, generate_captures, generate_quiets}) {
            Move* const end = generate(position, buffer.moves);
            ASSERT_LE(end, std::end(buffer.moves)) << fen;
            EXPECT_EQ(std::set<Move>(buffer.moves, end).size(), end - buffer.moves);
        }
        EXPECT_EQ(generate_pseudo_legal(position, buffer.moves), std::end(buffer.moves));
        EXPECT_EQ(buffer.guard, 0xABCD);
        MoveList list;
        generate_legal(position, list);
        EXPECT_LE(list.count, MAX_MOVES);
        EXPECT_EQ(list.count, count_legal(position));
    }
}

// The suite at its full depth is the perfttest command's; these counts are as telling and quick
// enough for every build.
TEST(Perft, KnownCounts) {
    struct Row {
        const char* fen;
        std::uint64_t counts[4]; // depth 1 upward
    };
    const Row rows[] = {
        {starting_fen, {20, 400, 8902, 197281}},
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
         {48, 2039, 97862, 4085603}},
        {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", {14, 191, 2812, 43238}},
        {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
         {6, 264, 9467, 422333}},
        {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", {44, 1486, 62379, 2103487}},
    };
    for (const Row& row : rows) {
        Position position = position_from(row.fen);
        EXPECT_EQ(perft(position, 0), 1U);
        for (int depth = 1; depth <= 4 && row.counts[depth - 1] < 500000; ++depth)
            EXPECT_EQ(perft(position, depth), row.counts[depth - 1]) << row.fen << ' ' << depth;
    }
}
