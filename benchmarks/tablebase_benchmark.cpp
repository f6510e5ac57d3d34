// The cost of endgame table probes:
//
//     tablebase_benchmark DIRECTORY
//
// The warm probes go over thousands of random positions of all the directory's 3- and 4-men tables.
#include "board/attacks.h"
#include "board/bitboard.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"

#include <benchmark/benchmark.h>
#include <cstdio>
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
    brindlemoth::init_attacks();
    if (argc > 1)
        brindlemoth::directory = argv[1];
    brindlemoth::syzygy_init(brindlemoth::directory);
    if (brindlemoth::syzygy_max_men < 4) {
        std::fprintf(stderr, "Give a directory with the tables of 3 and 4 men.\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
