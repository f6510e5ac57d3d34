// The cost of evaluate() and of each of its parts.
#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/king_safety.h"
#include "eval/passed_pawns.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"
#include "positions.h"

namespace brindlemoth {
namespace {

// A value that is at hand from before.
void bm_evaluate_again(benchmark::State& state) {
    over_positions(state, evaluate);
}
BENCHMARK(bm_evaluate_again);

// With another sum of placement each time, no value from before serves.
void bm_evaluate_anew(benchmark::State& state) {
    std::vector<Position> list = benchmark_positions();
    for (auto _ : state)
        for (Position& position : list) {
            position.psq += make_score(1, 0);
            benchmark::DoNotOptimize(evaluate(position));
        }
    state.SetItemsProcessed(static_cast<std::int64_t>(list.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(bm_evaluate_anew);

void bm_survey(benchmark::State& state) {
    over_positions(state, survey_board);
}
BENCHMARK(bm_survey);

// A term of White that is given its survey.
template <typename Term> void over_surveys(benchmark::State& state, Term term) {
    const std::vector<Position>& list = benchmark_positions();
    std::vector<Survey> surveys;
    for (const Position& position : list)
        surveys.push_back(survey_board(position));
    for (auto _ : state)
        for (std::size_t i = 0; i < list.size(); ++i)
            benchmark::DoNotOptimize(term(list[i], surveys[i]));
    state.SetItemsProcessed(static_cast<std::int64_t>(list.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

void bm_outposts(benchmark::State& state) {
    over_surveys(state, outposts<WHITE>);
}
BENCHMARK(bm_outposts);

void bm_rooks(benchmark::State& state) {
    over_surveys(state, rooks<WHITE>);
}
BENCHMARK(bm_rooks);

void bm_threats(benchmark::State& state) {
    over_surveys(state, threats<WHITE>);
}
BENCHMARK(bm_threats);

void bm_king_danger(benchmark::State& state) {
    over_surveys(state, [](const Position& position, const Survey& survey) {
        return king_danger<WHITE>(position, survey);
    });
}
BENCHMARK(bm_king_danger);

void bm_passed_extras(benchmark::State& state) {
    over_surveys(state, passed_extras<WHITE>);
}
BENCHMARK(bm_passed_extras);

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
