// The cost of finding moves, of telling the legal ones, and of playing them.
#include "movegen/generate.h"
#include "positions.h"

#include <cstddef>

namespace brindlemoth {
namespace {

using Generator = Move* (*)(const Position&, Move*);

template <Generator Generate> void bm_generate(benchmark::State& state) {
    over_positions(state, [](const Position& position) {
        Move moves[MAX_MOVES];
        return Generate(position, moves) - moves;
    });
}
BENCHMARK(bm_generate<generate_pseudo_legal>)->Name("bm_generate_pseudo_legal");
BENCHMARK(bm_generate<generate_captures>)->Name("bm_generate_captures");
BENCHMARK(bm_generate<generate_quiets>)->Name("bm_generate_quiets");

void bm_count_legal(benchmark::State& state) {
    over_positions(state, count_legal);
}
BENCHMARK(bm_count_legal);

void bm_in_check(benchmark::State& state) {
    over_positions(state, in_check);
}
BENCHMARK(bm_in_check);

void bm_legality_masks(benchmark::State& state) {
    over_positions(state, [](const Position& position) {
        const LegalityMasks masks = legality_masks(position);
        return masks.checkers ^ masks.needs_full_test ^ masks.check_mask;
    });
}
BENCHMARK(bm_legality_masks);

// Measures work(position, move) over all pseudo-legal moves; an item is a move.
template <typename Work> void over_moves(benchmark::State& state, bool legal_only, Work work) {
    struct Case {
        Position position;
        LegalityMasks masks;
        std::vector<Move> moves;
    };
    std::vector<Case> cases;
    std::size_t count = 0;
    for (const Position& position : benchmark_positions()) {
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        Case& c = cases.emplace_back(Case{position, legality_masks(position), {}});
        for (const Move* move = moves; move != end; ++move)
            if (!legal_only || move_is_legal(position, *move))
                c.moves.push_back(*move);
        count += c.moves.size();
    }
    for (auto _ : state)
        for (Case& c : cases)
            for (const Move move : c.moves)
                benchmark::DoNotOptimize(work(c.position, c.masks, move));
    state.SetItemsProcessed(static_cast<std::int64_t>(count) *
                            static_cast<std::int64_t>(state.iterations()));
}

void bm_legality_by_masks(benchmark::State& state) {
    over_moves(state, false, [](Position& position, const LegalityMasks& masks, Move move) {
        return move_is_legal(position, masks, move);
    });
}
BENCHMARK(bm_legality_by_masks);

void bm_legality_by_trial(benchmark::State& state) {
    over_moves(state, false, [](Position& position, const LegalityMasks&, Move move) {
        return move_is_legal(position, move);
    });
}
BENCHMARK(bm_legality_by_trial);

void bm_make_and_unmake(benchmark::State& state) {
    over_moves(state, true, [](Position& position, const LegalityMasks&, Move move) {
        make_move(position, move);
        const Key key = position.key;
        unmake_move(position, move);
        return key;
    });
}
BENCHMARK(bm_make_and_unmake);

} // namespace
} // namespace brindlemoth

BENCHMARK_MAIN();
