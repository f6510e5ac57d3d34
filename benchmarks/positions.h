// The positions that the benchmarks run over: all those one move away from six that differ, far
// enough apart that the branch predictor cannot learn them by heart.
#pragma once

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/make_move.h"
#include "eval/evaluate.h"
#include "eval/kpk.h"
#include "movegen/legality.h"

#include <benchmark/benchmark.h>
#include <vector>

namespace brindlemoth {

inline constexpr const char* benchmark_roots[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
};

inline const std::vector<Position>& benchmark_positions() {
    static const std::vector<Position> all = [] {
        init_attacks();
        init_keys();
        init_eval_tables();
        kpk_init();
        std::vector<Position> list;
        for (const char* fen : benchmark_roots) {
            Position position;
            position_set_fen(position, fen);
            MoveList moves;
            generate_legal(position, moves);
            for (int i = 0; i < moves.count; ++i) {
                make_move(position, moves.moves[i]);
                list.push_back(position);
                unmake_move(position, moves.moves[i]);
            }
        }
        return list;
    }();
    return all;
}

// Measures work(position) over all of them; an item is a position.
template <typename Work> void over_positions(benchmark::State& state, Work work) {
    const std::vector<Position>& list = benchmark_positions();
    for (auto _ : state)
        for (const Position& position : list)
            benchmark::DoNotOptimize(work(position));
    state.SetItemsProcessed(static_cast<std::int64_t>(list.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

} // namespace brindlemoth
