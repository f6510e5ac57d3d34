#include "board/make_move.h"
#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/king_safety.h"
#include "eval/pawns.h"
#include "support/support.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>

using namespace brindlemoth;

using Value = std::int64_t (*)(const Position&);

// Visits `count` random placements of one king a side, the given pieces (letters as in a FEN), and
// up to max_others more. Pawns may stand on any rank, and the side not to move may be in check.
static void for_random_placements(int count, const std::string& pieces, int max_others,
                                  const std::function<void(Position&)>& visit) {
    std::mt19937_64 random(52);
    for (; count > 0; --count) {
        std::string fen = "11111111/11111111/11111111/11111111/11111111/11111111/11111111/11111111";
        fen += random() % 2 == 0 ? " w - - 0 1" : " b - - 0 1";
        const auto put = [&](char letter) {
            char* at = nullptr;
            do {
                const int square = static_cast<int>(random() % 64);
                at = &fen[static_cast<std::size_t>(9 * (7 - rank_of(square)) + file_of(square))];
            } while (*at != '1');
            *at = letter;
        };
        for (const char letter : "Kk" + pieces)
            put(letter);
        for (std::size_t n = random() % static_cast<std::size_t>(max_others + 1); n > 0; --n)
            put("PPPPNBRQppppnbrq"[random() % 16]);
        Position position = position_from(fen);
        visit(position);
    }
}

// The value with either side to move and with another piece-square sum. The cached evaluation of
// one of them must not be used for another.
static std::int64_t values(const Position& position) {
    Position copy = position;
    std::int64_t sum = evaluate(copy);
    make_null_move(copy);
    sum += std::int64_t{3} * evaluate(copy);
    copy.psq += make_score(40, -20);
    return sum + std::int64_t{5} * evaluate(copy);
}

// Totals over random placements and endings. Each value is weighted by its position in the list, so
// that errors do not cancel. A change for speed keeps all totals.
TEST(Evaluate, TotalsOverRandomPlacements) {
    const struct {
        const char* term;
        int style;
        Value value;
        std::int64_t total;
    } ROWS[] = {
        {"value, Linear", 1, values, 204195283},
        {"value", 0, values, 201982593},
        {"placement, Linear", 1, [](const Position& p) { return std::int64_t{raw(p.psq)}; },
         2260827707023},
        {"placement", 0, [](const Position& p) { return std::int64_t{raw(p.psq)}; }, 2213966283512},
        {"phase", 0, [](const Position& p) { return std::int64_t{game_phase(p)}; }, 5397666},
        {"pawns", 0, [](const Position& p) { return std::int64_t{raw(evaluate_pawns(p))}; },
         -291302892197},
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
        for (const int max_others : {5, 24, 40})
            for_random_placements(2000, "", max_others, add);
        for (const char* const pieces :
             {"",   "N",   "NN",  "Bb",  "R",  "q",  "BN",  "nb",    "P",       "p",
              "BP", "bpp", "RPr", "rpR", "Rr", "Qr", "RRq", "BPPbp", "BPPbppp", "BPnpp"})
            for_random_placements(1000, pieces, 0, add);
        EXPECT_EQ(total, row.total) << row.term;
    }
}

TEST(PackedScore, HalvesKeepTheBorrow) {
    EXPECT_EQ(eg_value(S(-5, 10)), 9);
    EXPECT_EQ(eg_value(S(5, 10)), 10);
    EXPECT_EQ(mg_value(S(-1, 0)), -1);
    EXPECT_EQ(eg_value(S(0, -1)), -1);
    EXPECT_EQ(S(-35, 12) + S(82, 94), S(47, 106));
}

// These positions were constructed to have equal keys and equal piece-square sums.
TEST(Evaluate, EqualKeysOfDifferentPositions) {
    const Position one = position_from("b2n2k1/4pb2/3pRp2/P1p2p2/Q5p1/3p3P/p6P/5BK1 w - - 0 1");
    const Position two = position_from("1r2b1kQ/1p6/6p1/1n4p1/8/2P5/2P1P3/1B1nB1K1 w - - 0 1");
    ASSERT_EQ(one.key, two.key);
    ASSERT_EQ(one.psq, two.psq);
    EXPECT_EQ(evaluate(one), -303);
    EXPECT_EQ(evaluate(two), 154);
}

static std::string trace_of(const char* fen) {
    testing::internal::CaptureStdout();
    eval_trace(position_from(fen));
    return testing::internal::GetCapturedStdout();
}

// Black has a rook on an open file and two bishops, so both RooksB and BishopPair show its sign.
TEST(EvalTrace, Lines) {
    EXPECT_EQ(trace_of("r1b1kb2/5ppp/8/8/2p5/3R4/3Q4/4K3 b - - 0 1"),
              "=== Evaluation Trace ===\n"
              "Phase: 10/24\n"
              "Material+PST      MG:   -49  EG:    -9\n"
              "Pawns             MG:   -65  EG:  -118\n"
              "Mobility          MG:   -90  EG:   -45\n"
              "RooksW            MG:   +47  EG:   +26\n"
              "RooksB            MG:   -47  EG:   -26\n"
              "Threats           MG:   -60  EG:   -16\n"
              "BishopPair          -22\n"
              "KingSafety        W: 52  B: 68  net: +16\n"
              "---\n"
              "Total (side-to-move): +269 cp\n");
    const std::string without_king = trace_of("8/8/8/8/8/8/8/4Q2K w - - 0 1");
    EXPECT_NE(without_king.find("W: 40  B: 0  net: -40\n"), std::string::npos) << without_king;
}

TEST(KingDanger, Cases) {
    const struct {
        const char* what;
        const char* board;
        int expected; // for Black's king
    } cases[] = {{"the lowest of several kings", "3k4/8/8/8/8/8/8/k7", 40},
                 {"three open files", "3k4/8/8/8/8/8/8/8", 60},
                 {"only the higher queen can check", "k7/pp6/8/8/8/8/PP6/QN1Q4", 0},
                 {"beyond the table's end", "8/QQQQQQQQ/Q6Q/Q6Q/Q2k3Q/Q6Q/QQQQQQQQ/8", 860 + 60}};
    for (const auto& c : cases) {
        const Position position = position_from(std::string(c.board) + " w - - 0 1");
        const PawnInfo pawns = collect_pawns(position);
        const PieceInfo attackers = collect_pieces<WHITE>(position, pawns);
        EXPECT_EQ(king_danger<BLACK>(position, pawns, attackers), c.expected) << c.what;
    }
}
