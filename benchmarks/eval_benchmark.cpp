// The cost of evaluate() and of its parts.
#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/pawns.h"
#include "eval/survey.h"
#include "positions.h"

namespace brindlemoth {
namespace {

void bm_evaluate(benchmark::State& state) {
    over_positions(state, evaluate);
}
BENCHMARK(bm_evaluate);

void bm_survey(benchmark::State& state) {
    over_positions(state, survey_board);
}
BENCHMARK(bm_survey);

void bm_pawns_cached(benchmark::State& state) {
    over_positions(state, evaluate_pawns);
}
BENCHMARK(bm_pawns_cached);

void bm_pawns_missed(benchmark::State& state) {
    over_positions(state, [](const Position& position) {
        pawn_cache[position.pawn_key % PAWN_CACHE_SIZE].key = ~position.pawn_key;
        return evaluate_pawns(position);
    });
}
BENCHMARK(bm_pawns_missed);

void bm_endgame_tests(benchmark::State& state) {
    over_positions(state, [](const Position& position) {
        return endgame_bonus(position) + endgame_scale(position, 30);
    });
}
BENCHMARK(bm_endgame_tests);

} // namespace
} // namespace brindlemoth

BENCHMARK_MAIN();
