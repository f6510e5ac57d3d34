// The cost of endgame table probes, alone and inside a search:
//
//     tablebase_benchmark DIRECTORY >/dev/null
//
// The directory holds the tables of 3 and 4 men; "tablegen --men 4 --out DIRECTORY" makes them. The
// searches print their info lines on standard output, the results go to standard error. The warm
// probes read thousands of random positions of all these tables.
#include "board/bitboard.h"
#include "board/fen.h"
#include "board/position.h"
#include "search/root.h"
#include "shell/startup.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <random>
#include <vector>

namespace brindlemoth {
namespace {

constexpr int POSITIONS = 8192;
const char* directory = "";

void put_man(ProbeBoard& board, bool white, int type, int square) {
    Bitboard* const sets[] = {&board.pawns, &board.knights, &board.bishops,
                              &board.rooks, &board.queens,  &board.kings};
    *sets[type - PROBE_PAWN] |= square_bit(square);
    (white ? board.white : board.black) |= square_bit(square);
}

// A sane position with one or two men of any kind beside the kings.
ProbeBoard random_board(std::mt19937& random) {
    while (true) {
        ProbeBoard board{};
        board.white_to_move = random() & 1;
        const int men = 3 + static_cast<int>(random() % 4 != 0);
        for (int i = 0; i < men; ++i) {
            const int type =
                i < 2 ? PROBE_KING : PROBE_PAWN + static_cast<int>(random() % PROBE_QUEEN);
            const bool white = i < 2 ? i == 0 : (random() & 1) != 0;
            int square;
            do
                square = static_cast<int>(random() % 64);
            while (((board.white | board.black) & square_bit(square)) != 0);
            put_man(board, white, type, square);
        }
        if (board_is_sane(board))
            return board;
    }
}

// Positions that the tables answer for, all files mapped and read.
const std::vector<ProbeBoard>& positions() {
    static const std::vector<ProbeBoard> all = [] {
        std::vector<ProbeBoard> list;
        std::mt19937 random(1);
        for (int tries = 0; tries < 20 * POSITIONS && list.size() < POSITIONS; ++tries) {
            const ProbeBoard board = random_board(random);
            int success;
            syzygy_dtz(board, success);
            if (success != PROBE_FAILED)
                list.push_back(board);
        }
        return list;
    }();
    return all;
}

template <typename Probe> void probe_all(benchmark::State& state, Probe probe) {
    const std::vector<ProbeBoard>& boards = positions();
    if (boards.empty()) {
        state.SkipWithError("no tables");
        return;
    }
    for (auto _ : state) {
        for (const ProbeBoard& board : boards) {
            int success = PROBE_GOOD;
            benchmark::DoNotOptimize(probe(board, success));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(boards.size()));
}

void warm_wdl(benchmark::State& state) {
    probe_all(state, syzygy_wdl);
}
BENCHMARK(warm_wdl);

// The table alone, without the capture search.
void warm_table_read(benchmark::State& state) {
    probe_all(state, [](const ProbeBoard& board, int& success) {
        return syzygy_probe_table(board, 0, success, KIND_WDL);
    });
}
BENCHMARK(warm_table_read);

void warm_dtz(benchmark::State& state) {
    probe_all(state, syzygy_dtz);
}
BENCHMARK(warm_dtz);

// Mapping a file, checking its headers and building its decoders, and one value; the file's pages
// are in the system's cache. Giving it all back is part of the time.
void first_probe(benchmark::State& state, bool pawns) {
    ProbeBoard board{};
    board.white_to_move = 1;
    put_man(board, true, PROBE_KING, C3);
    put_man(board, false, PROBE_KING, F7);
    put_man(board, true, pawns ? PROBE_PAWN : PROBE_QUEEN, B5);
    put_man(board, false, pawns ? PROBE_PAWN : PROBE_ROOK, H4);
    TableHashSlot& slot = table_slot(board_material_key(board, false));
    if (slot.entry == nullptr) {
        state.SkipWithError("no table");
        return;
    }
    for (auto _ : state) {
        syzygy_release_entry(*slot.entry);
        int success = PROBE_GOOD;
        benchmark::DoNotOptimize(syzygy_probe_table(board, 0, success, KIND_WDL));
    }
}
BENCHMARK_CAPTURE(first_probe, KQvKR, false);
BENCHMARK_CAPTURE(first_probe, KPvKP, true);

// Positions of five and six men whose captures lead into the tables.
constexpr const char* search_positions[] = {
    "8/8/4k3/2r5/8/3KP3/8/4R3 w - - 0 1",    "8/5k2/8/3PK3/8/1r6/8/3R4 w - - 0 1",
    "8/3k4/8/2n5/4P3/3K4/8/5B2 w - - 0 1",   "8/2p5/3k4/8/3P4/2K5/1P6/8 w - - 0 1",
    "3q4/8/4k3/8/3PK3/8/8/6Q1 w - - 0 1",    "8/5pk1/8/6K1/4P3/8/r7/4R3 w - - 0 1",
    "8/8/1p1k4/3p4/1P1P4/3K4/8/8 w - - 0 1", "8/3k1p2/8/3n4/5P2/3K4/8/3B4 w - - 0 1",
    "8/6pk/8/4q3/8/5P2/6K1/3Q4 w - - 0 1",   "8/2k5/1p6/2b5/4N3/2P5/3K4/8 w - - 0 1",
};

// Each search starts with an empty transposition table, so that all have the same nodes.
void search_to_depth_20(benchmark::State& state) {
    const char* const fen = search_positions[state.range(0)];
    Position position;
    position_set_fen(position, fen);
    SearchLimits limits{};
    limits.depth = 20;
    std::uint64_t nodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        clear_search_memory();
        state.ResumeTiming();
        search_root(position, limits);
        nodes += node_count;
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(nodes));
    state.SetLabel(fen);
}
BENCHMARK(search_to_depth_20)
    ->DenseRange(0, static_cast<int>(std::size(search_positions)) - 1)
    ->Unit(benchmark::kMillisecond);

// Looking for all 1,511 signatures in one directory.
void discovery(benchmark::State& state) {
    for (auto _ : state)
        syzygy_init(directory);
}
BENCHMARK(discovery)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace brindlemoth

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    brindlemoth::start_engine();
    if (argc > 1)
        brindlemoth::directory = argv[1];
    brindlemoth::syzygy_init(brindlemoth::directory);
    if (brindlemoth::syzygy_max_men < 4) {
        std::fprintf(stderr, "Give a directory with the tables of 3 and 4 men.\n"
                             "\"tablegen --men 4 --out DIRECTORY\" makes them.\n");
        return 1;
    }
    brindlemoth::syzygy_probe_limit = 4;
    benchmark::ConsoleReporter results;
    results.SetOutputStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&results);
    benchmark::Shutdown();
    return 0;
}
