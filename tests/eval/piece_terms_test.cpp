#include "board/attacks.h"
#include "board/bitboard.h"
#include "eval/piece_terms.h"
#include "eval_support.h"
#include "support/support.h"

#include <gtest/gtest.h>
#include <string>

namespace brindlemoth {
namespace {

using Term = Score (*)(const Position&, int);

struct Case {
    const char* what;
    const char* board;
    Score expected; // for White; Black gets the same in the mirrored position
};

void check(Term term, const Case& c) {
    SCOPED_TRACE(c.what);
    const Position position = position_from(std::string(c.board) + " w - - 0 1");
    EXPECT_EQ(term(position, WHITE), c.expected);
    EXPECT_EQ(term(mirrored(position), BLACK), c.expected);
}

TEST(PieceTerms, Mobility) {
    const Case cases[] = {
        {"no pieces", "4k3/8/8/8/8/8/8/4K3", Score{}},
        {"own pawns leave the knight nothing", "8/8/8/8/8/1P6/2P5/N7", S(-62, -79)},
        {"enemy pawn attacks leave it nothing", "8/8/8/8/2p5/3p4/8/N7", S(-62, -79)},
        {"the own king's square does not count", "8/8/8/8/8/1K6/8/N7", S(-53, -57)},
        {"an own piece in the way counts", "8/8/8/8/8/8/1N6/B7", S(-20, -25) + S(3, 7)},
        {"an enemy piece in the way counts", "8/8/8/8/8/8/1n6/B7", S(-20, -25)},
        {"open bishop", "8/8/8/8/3B4/8/8/8", S(96, 98)},
        {"open rook", "8/8/8/8/8/8/8/R7", S(67, 175)},
        {"the queen is one piece", "8/8/8/8/8/8/8/Q7", S(7, 28)},
    };
    for (const Case& c : cases) {
        check(evaluate_mobility, c);
    }
}

// One piece on d4 with own pawns set so that it reaches `count` squares.
Position reaching(int type, int count) {
    constexpr int orthogonal[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
    constexpr int diagonal[4][2] = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
    constexpr int jumps[8][2] = {{1, 2},  {2, 1},  {-1, 2},  {-2, 1},
                                 {1, -2}, {2, -1}, {-1, -2}, {-2, -1}};
    std::string rows[8];
    for (std::string& row : rows) {
        row = "11111111";
    }
    const auto square_at = [&](int file, int rank) -> char* {
        return file < 0 || file > 7 || rank < 0 || rank > 7
                   ? nullptr
                   : &rows[rank][static_cast<std::size_t>(file)];
    };
    *square_at(3, 3) = "PNBRQK"[type];
    const auto ray = [&](const int(&step)[2], int length) {
        for (int n = 1; n <= length; ++n) {
            char* const square = square_at(3 + n * step[0], 3 + n * step[1]);
            if (square == nullptr) {
                return;
            }
            if (count == 0) {
                *square = 'P';
                return;
            }
            --count;
        }
    };
    for (const auto& step : jumps) {
        ray(step, type == KNIGHT ? 1 : 0);
    }
    for (const auto& step : orthogonal) {
        ray(step, type == ROOK || type == QUEEN ? 7 : 0);
    }
    for (const auto& step : diagonal) {
        ray(step, type == BISHOP || type == QUEEN ? 7 : 0);
    }
    std::string fen;
    for (int rank = 7; rank >= 0; --rank) {
        fen += rows[rank] + (rank > 0 ? "/" : " w - - 0 1");
    }
    return position_from(fen);
}

// The totals of the four tables, plain and weighted by place, betray any wrong or moved entry.
TEST(PieceTerms, MobilityTablesAddUp) {
    const struct {
        int type;
        int most; // squares reached on an empty board
        Score total, weighted;
    } cases[] = {
        {KNIGHT, 8, S(-29, -102), S(575, 264)},
        {BISHOP, 13, S(660, 583), S(7064, 6839)},
        {ROOK, 14, S(337, 1454), S(4716, 16101)},
        {QUEEN, 27, S(51, 625), S(2270, 10799)},
    };
    for (const auto& c : cases) {
        Score total{};
        Score weighted{};
        for (int count = 0; count <= c.most; ++count) {
            const Score value = evaluate_mobility(reaching(c.type, count), WHITE);
            total += value;
            weighted += value * (count + 1);
        }
        EXPECT_EQ(total, c.total) << "piece type " << c.type;
        EXPECT_EQ(weighted, c.weighted) << "piece type " << c.type;
    }
}

TEST(PieceTerms, Outposts) {
    const Case cases[] = {
        {"defended, a-file", "8/8/N7/1P6/8/8/8/8", S(20, 12)},
        {"defended, b-file", "8/8/1N6/P7/8/8/8/8", S(30, 18)},
        {"undefended, h-file", "8/8/8/7N/8/8/8/8", S(10, 5)},
        {"seventh rank", "8/1N6/P7/8/8/8/8/8", Score{}},
        {"third rank", "8/8/8/8/8/2N5/1P6/8", Score{}},
        {"attacked by a pawn", "8/1p6/2N5/8/8/8/8/8", Score{}},
        {"a pawn behind cannot attack it", "8/8/1pN5/8/8/8/8/8", S(15, 8)},
        {"a far pawn can come near", "8/1p6/8/8/2N5/8/8/8", Score{}},
        {"bishop on the edge", "8/8/8/7B/8/8/8/8", S(6, 3)},
        {"bishop on the edge, defended", "8/8/8/7B/6P1/8/8/8", S(14, 8)},
        {"bishop inside, defended", "8/8/8/3B4/4P3/8/8/8", S(20, 12)},
        {"bishop inside", "8/8/8/3B4/8/8/8/8", S(10, 5)},
        {"blocked pawn out of the bishop's reach", "8/8/8/4p3/4P3/8/8/2B5", S(-4, -6)},
        {"blocked pawn within it", "8/8/8/4p3/4P3/8/8/1B6", Score{}},
        {"bishops of both colours count it once", "8/8/8/4p3/4P3/8/8/1BB5", S(-4, -6)},
        {"two bishops of a colour count it twice", "8/8/8/4p3/4P3/8/8/B1B5", S(-8, -12)},
    };
    for (const Case& c : cases) {
        check(evaluate_outposts, c);
    }
}

TEST(PieceTerms, Rooks) {
    const Case cases[] = {
        {"open file", "8/8/8/8/3R4/8/8/8", S(47, 26)},
        {"half-open file", "8/3p4/8/8/3R4/8/8/8", S(20, 13)},
        {"own pawn, even behind", "8/8/8/8/3R4/8/3P4/8", Score{}},
        {"seventh rank, king on the eighth", "6k1/R7/8/8/8/8/8/8", S(74, 59)},
        {"seventh rank, king beside it", "8/R5k1/8/8/8/8/8/8", S(47, 26)},
        {"seventh rank with a pawn on it", "8/R5kp/8/8/8/8/8/8", S(74, 59)},
        {"eighth rank", "R5k1/7p/8/8/8/8/8/8", S(47, 26)},
        {"no king at all", "8/R7/8/8/8/8/8/8", S(47, 26)},
    };
    for (const Case& c : cases) {
        check(evaluate_rooks, c);
    }
    // Of two kings the one on the lowest square is the king.
    EXPECT_EQ(evaluate_rooks(position_from("6k1/R7/8/8/8/8/8/6k1 w - - 0 1"), WHITE), S(47, 26));
}

TEST(PieceTerms, Threats) {
    const Case cases[] = {
        {"nothing", "4k3/8/8/8/8/8/8/4K3", Score{}},
        {"knight forks rook and queen", "8/8/1r3q2/3N4/8/8/8/8", S(95, 45)},
        {"each minor piece counts", "8/8/5r2/3N4/8/8/8/B7", S(90, 40)},
        {"two pawns on two knights", "8/8/8/1n3n2/P3P3/8/8/8", S(55, 30)},
        {"pawn on rook", "8/8/8/1r6/P7/8/8/8", S(60, 15)},
        {"pawn on queen", "8/8/8/1q6/P7/8/8/8", Score{}},
        {"no wrap around the edge", "8/8/7n/r7/7P/8/8/8", Score{}},
        {"a bishop sees no further than the first piece", "7r/8/8/8/8/2P5/8/B7", Score{}},
    };
    for (const Case& c : cases) {
        check(evaluate_threats, c);
    }
}

// Minor threats piece by piece, with sets looked up one after the other.
Score minor_threats(const Position& position, int colour) {
    Score score{};
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        const int piece = position.board[square];
        Bitboard reach = 0;
        if (piece == make_piece(colour, KNIGHT)) {
            reach = knight_attacks[square];
        } else if (piece == make_piece(colour, BISHOP)) {
            reach = bishop_attacks_slow(square, position.all_pieces);
        }
        score += (reach & position.pieces[colour ^ 1][ROOK]) != 0 ? S(45, 20) : Score{};
        score += (reach & position.pieces[colour ^ 1][QUEEN]) != 0 ? S(50, 25) : Score{};
    }
    return score;
}

TEST(PieceTerms, ThreatsOfRandomPlacements) {
    for_random_placements(3000, 43, 24, [](Position& position) {
        for (const int colour : {WHITE, BLACK}) {
            Bitboard targets[6] = {};
            for (int square = 0; square < SQUARE_COUNT; ++square) {
                const int piece = position.board[square];
                if (piece != EMPTY_SQUARE && piece_colour(piece) != colour &&
                    (pawn_attacks[colour ^ 1][square] & position.pieces[colour][PAWN]) != 0) {
                    targets[piece_type(piece)] |= square_bit(square);
                }
            }
            Score expected = minor_threats(position, colour);
            expected += (targets[KNIGHT] | targets[BISHOP]) != 0 ? S(55, 30) : Score{};
            expected += targets[ROOK] != 0 ? S(60, 15) : Score{};
            ASSERT_EQ(evaluate_threats(position, colour), expected);
        }
    });
}

TEST(PieceTerms, AreBlindToColour) {
    const auto compare = [](Position& position) {
        const Position mirror = mirrored(position);
        for (const Term term :
             {evaluate_mobility, evaluate_outposts, evaluate_rooks, evaluate_threats}) {
            ASSERT_EQ(term(position, WHITE), term(mirror, BLACK));
            ASSERT_EQ(term(position, BLACK), term(mirror, WHITE));
        }
    };
    for_random_positions(3000, 44, compare);
    for_random_placements(3000, 45, 30, compare);
}

} // namespace
} // namespace brindlemoth
