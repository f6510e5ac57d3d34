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

// The evaluation cache holds each value.
void bm_evaluate_again(benchmark::State& state) {
    over_positions(state, evaluate);
}
BENCHMARK(bm_evaluate_again);

// Each call has another piece-square sum, so the evaluation cache never holds the value.
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

struct AttackInfo {
    PawnInfo pawns;
    PieceInfo white_pieces;
};

AttackInfo collect_attack_info(const Position& position) {
    const PawnInfo pawns = collect_pawns(position);
    return {pawns, collect_pieces<WHITE>(position, pawns)};
}

void bm_attack_info(benchmark::State& state) {
    over_positions(state, collect_attack_info);
}
BENCHMARK(bm_attack_info);

// A term that uses the collected attack information.
template <typename Term> void over_attack_infos(benchmark::State& state, Term term) {
    const std::vector<Position>& list = benchmark_positions();
    std::vector<AttackInfo> infos;
    for (const Position& position : list)
        infos.push_back(collect_attack_info(position));
    for (auto _ : state)
        for (std::size_t i = 0; i < list.size(); ++i)
            benchmark::DoNotOptimize(term(list[i], infos[i]));
    state.SetItemsProcessed(static_cast<std::int64_t>(list.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

void bm_outposts(benchmark::State& state) {
    over_attack_infos(state, [](const Position& position, const AttackInfo& info) {
        return evaluate_outposts<WHITE>(position, info.pawns);
    });
}
BENCHMARK(bm_outposts);

void bm_rooks(benchmark::State& state) {
    over_attack_infos(state, [](const Position& position, const AttackInfo& info) {
        return evaluate_rooks<WHITE>(position, info.pawns);
    });
}
BENCHMARK(bm_rooks);

void bm_threats(benchmark::State& state) {
    over_attack_infos(state, [](const Position& position, const AttackInfo& info) {
        return evaluate_threats<WHITE>(position, info.pawns, info.white_pieces);
    });
}
BENCHMARK(bm_threats);

void bm_king_danger(benchmark::State& state) {
    over_attack_infos(state, [](const Position& position, const AttackInfo& info) {
        return king_danger<BLACK>(position, info.pawns, info.white_pieces);
    });
}
BENCHMARK(bm_king_danger);

void bm_passed_pawns(benchmark::State& state) {
    over_attack_infos(state, [](const Position& position, const AttackInfo& info) {
        return evaluate_passed_pawns<WHITE>(position, info.pawns);
    });
}
BENCHMARK(bm_passed_pawns);

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
