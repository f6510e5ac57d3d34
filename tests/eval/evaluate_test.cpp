#include "board/make_move.h"
#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/king_safety.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"
#include "eval_support.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

using Value = std::int64_t (*)(const Position&);

template <Score (*term)(const Position&, int)> std::int64_t both_sides(const Position& position) {
    return raw(term(position, WHITE)) - 3LL * raw(term(position, BLACK));
}

// The value with either side to move and for another sum of placement: what is kept of one of
// them must not serve for another.
std::int64_t values(const Position& position) {
    Position copy = position;
    std::int64_t sum = evaluate(copy);
    make_null_move(copy);
    sum += std::int64_t{3} * evaluate(copy);
    copy.psq += make_score(40, -20);
    return sum + std::int64_t{5} * evaluate(copy);
}

// Totals over boards strewn with men and over endings, each weighted by its place in the row, so
// that no two errors cancel. The rules of the evaluation fix them: a change that is to make it
// faster keeps them, and one of a term shows in that term.
TEST(Evaluate, TotalsOverStrewnMen) {
    const struct {
        const char* term;
        int style;
        Value value;
        std::int64_t total;
    } ROWS[] = {
        {"value, Linear", 1, values, 204195283},
        {"value", 0, values, 201982593},
        {"phase", 0, [](const Position& p) { return std::int64_t{game_phase(p)}; }, 5397666},
        {"pawns", 0, [](const Position& p) { return std::int64_t{raw(evaluate_pawns(p))}; },
         -291302892197},
        {"mobility", 0, both_sides<evaluate_mobility>, -9093801077521},
        {"outposts", 0, both_sides<evaluate_outposts>, -117796425875},
        {"rooks", 0, both_sides<evaluate_rooks>, -842951587513},
        {"threats", 0, both_sides<evaluate_threats>, -482718043925},
        {"danger", 0,
         [](const Position& p) {
             return king_danger(p, WHITE) - std::int64_t{3} * king_danger(p, BLACK);
         },
         -138695810},
        {"bonus", 0, [](const Position& p) { return std::int64_t{endgame_bonus(p)}; }, 280230},
        {"scale", 0,
         [](const Position& p) {
             return endgame_scale(p, 1) + std::int64_t{3} * endgame_scale(p, -1);
         },
         588270000},
    };
    for (const auto& row : ROWS) {
        eval_style = row.style; // ends in the style that the other tests expect
        init_eval_tables();
        std::int64_t total = 0;
        int place = 0;
        const auto add = [&](Position& position) {
            total += (place++ % 97 + 1) * row.value(position);
        };
        for (const int men : {5, 24, 40})
            for_random_placements(2000, "", men, add);
        for (const char* const men :
             {"",   "N",   "NN",  "Bb",  "R",  "q",  "BN",  "nb",    "P",       "p",
              "BP", "bpp", "RPr", "rpR", "Rr", "Qr", "RRq", "BPPbp", "BPPbppp", "BPnpp"})
            for_random_placements(1000, men, 0, add);
        EXPECT_EQ(total, row.total) << row.term;
    }
}

TEST(Evaluate, MirroredPositionsDifferByOneAtMost) {
    int compared = 0;
    const auto compare = [&](Position& position) {
        const Position mirror = mirrored(position);
        ASSERT_EQ(mirror.psq, -position.psq);
        ASSERT_EQ(evaluate_pawns(position), -evaluate_pawns(mirror));
        ASSERT_EQ(endgame_bonus(position), -endgame_bonus(mirror));
        ASSERT_EQ(endgame_scale(position, 1), endgame_scale(mirror, -1));
        // King danger tells several queens apart by their squares, and is no mirror image then.
        if (more_than_one(position.pieces[WHITE][QUEEN]) ||
            more_than_one(position.pieces[BLACK][QUEEN]))
            return;
        ++compared;
        ASSERT_LE(std::abs(evaluate(position) - evaluate(mirror)), 1);
    };
    for (const int men : {3, 16})
        for_random_placements(3000, "", men, compare);
    EXPECT_GT(compared, 4000);
}

} // namespace
} // namespace brindlemoth
