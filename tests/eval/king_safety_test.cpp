#include "board/attacks.h"
#include "board/bitboard.h"
#include "eval/king_safety.h"
#include "eval_support.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(KingDanger, Cases) {
    const struct {
        const char* what;
        const char* board;
        int expected; // for Black's king
    } cases[] = {{"starting position", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR", 0},
                 {"the lowest of several kings", "3k4/8/8/8/8/8/8/k7", 40},
                 {"no king", "8/8/8/8/8/8/8/4Q2K", 0},
                 {"three open files", "3k4/8/8/8/8/8/8/8", 60},
                 {"only the higher queen can check", "k7/pp6/8/8/8/8/PP6/QN1Q4", 0},
                 {"beyond the table's end", "8/QQQQQQQQ/Q6Q/Q6Q/Q2k3Q/Q6Q/QQQQQQQQ/8", 860 + 60}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Position position = position_from(std::string(c.board) + " w - - 0 1");
        EXPECT_EQ(king_danger(position, BLACK), c.expected);
    }
}

// Units counted attacker by attacker in the order of the rules, each step capped on its own.
int danger_step_by_step(const Position& position, int colour) {
    const int attacker = colour ^ 1;
    const int king = lowest_square(position.pieces[colour][KING]);
    const Bitboard all = position.all_pieces;
    const auto reach = [&](int type, int square) {
        Bitboard set = type == KNIGHT ? knight_attacks[square] : 0;
        set |= type == BISHOP || type == QUEEN ? bishop_attacks_slow(square, all) : 0;
        return set | (type == ROOK || type == QUEEN ? rook_attacks_slow(square, all) : 0);
    };
    Bitboard safe = ~position.occupied[attacker];
    for (int square = 0; square < SQUARE_COUNT; ++square)
        if ((pawn_attacks[attacker][square] & position.pieces[colour][PAWN]) != 0)
            safe &= ~square_bit(square);
    const int zone_weight[6] = {0, 2, 2, 3, 5, 0};
    const int check_weight[6] = {0, 2, 2, 3, 6, 0};
    int units = 0;
    int checks = 0;
    for (int type = KNIGHT; type <= QUEEN; ++type) {
        bool checked = false;
        bool first = true;
        for (Bitboard rest = position.pieces[attacker][type]; rest != 0; first = false) {
            const Bitboard set = reach(type, pop_lowest(rest));
            if ((set & king_attacks[king]) != 0)
                units = std::min(99, units + zone_weight[type]);
            checked |= (type != QUEEN || first) && (set & reach(type, king) & safe) != 0;
        }
        checks += checked ? check_weight[type] : 0;
    }
    units += checks;
    const int slow_start[24] = {0,  0,  1,  2,  3,  5,  7,  10, 13, 16, 20, 24,
                                28, 33, 38, 44, 50, 56, 62, 68, 75, 83, 91, 100};
    int danger = units < 24 ? slow_start[units] : std::min(860, 100 + 10 * (units - 23));
    for (int file = std::max(0, file_of(king) - 1); file <= std::min(7, file_of(king) + 1); ++file)
        if ((position.pieces[colour][PAWN] & file_mask(file)) == 0)
            danger += (position.pieces[attacker][PAWN] & file_mask(file)) != 0 ? 10 : 20;
    return danger;
}

TEST(KingDanger, AgreesWithTheStepByStepCount) {
    const auto compare = [](Position& position) {
        for (const int colour : {WHITE, BLACK}) {
            ASSERT_EQ(king_danger(position, colour), danger_step_by_step(position, colour));
        }
    };
    for_random_positions(3000, 46, compare);
    for_random_placements(3000, 47, 40, compare);
}

} // namespace
} // namespace brindlemoth
