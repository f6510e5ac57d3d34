#include "shell/diagnostics.h"

#include "board/make_move.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "movegen/perft.h"
#include "platform/clock.h"
#include "platform/standard_output.h"
#include "search/root.h"

namespace brindlemoth {

namespace {

constexpr int DEFAULT_BENCH_DEPTH = 10;

// bench searches the first positions of the perft suite.
constexpr int BENCH_POSITION_COUNT = 5;
static_assert(BENCH_POSITION_COUNT <= PERFT_CASE_COUNT);

// Searches the position from cleared search memory and returns the number of nodes.
std::uint64_t bench_position(const char* fen, int depth) {
    Position position;
    position_set_fen(position, fen);
    clear_search_memory();
    SearchLimits limits{};
    limits.depth = depth;
    search_root(position, limits);
    return node_count;
}

} // namespace

void cmd_bench(int depth) {
    constexpr std::uint64_t MILLISECONDS_PER_SECOND = 1000;
    if (depth < 1)
        depth = DEFAULT_BENCH_DEPTH;
    const std::int64_t start = tick_count();
    std::uint64_t nodes = 0;
    for (int i = 0; i < BENCH_POSITION_COUNT; ++i)
        nodes += bench_position(perft_cases[i].fen, depth);
    const std::int64_t elapsed = tick_count() - start;
    const std::uint64_t nps =
        elapsed > 0 ? nodes * MILLISECONDS_PER_SECOND / static_cast<std::uint64_t>(elapsed) : 0;
    print("\n=== Bench ===\n");
    print("Depth   : %d\n", depth);
    print("Nodes   : %llu\n", static_cast<unsigned long long>(nodes));
    print("Time    : %lld ms\n", static_cast<long long>(elapsed));
    print("NPS     : %llu\n", static_cast<unsigned long long>(nps));
}

void cmd_dupcheck(const Position& position) {
    Move moves[MAX_MOVES];
    const int count = static_cast<int>(generate_pseudo_legal(position, moves) - moves);
    int duplicates = 0;
    for (int i = 0; i < count; ++i) {
        for (int j = i + 1; j < count; ++j) {
            if (moves[i] == moves[j]) {
                print("DUPLICATE: %s (indices %d and %d)\n", move_to_text(moves[i]), i, j);
                ++duplicates;
            }
        }
    }
    print("Total pseudo-legal: %d, Duplicates: %d\n", count, duplicates);
}

void cmd_illegalcheck(Position& position) {
    Move moves[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, moves);
    int illegal = 0;
    for (const Move* move = moves; move != end; ++move) {
        if (!move_is_legal(position, *move))
            continue;
        Position copy = position;
        make_move(copy, *move);
        const int us = position.side;
        if (copy.pieces[us][KING] == 0)
            continue;
        const int square = lowest_square(copy.pieces[us][KING]);
        const Bitboard* const them = copy.pieces[copy.side];
        const bool pawn = (pawn_attacks[us][square] & them[PAWN]) != 0;
        const bool knight = (knight_attacks[square] & them[KNIGHT]) != 0;
        const bool king = (king_attacks[square] & them[KING]) != 0;
        const bool diag =
            (bishop_attacks(square, copy.all_pieces) & (them[BISHOP] | them[QUEEN])) != 0;
        const bool orth = (rook_attacks(square, copy.all_pieces) & (them[ROOK] | them[QUEEN])) != 0;
        if (pawn || knight || king || diag || orth) {
            print("ILLEGAL (king in check): %s  pawn=%d knight=%d king=%d diag=%d orth=%d\n",
                  move_to_text(*move), pawn, knight, king, diag, orth);
            ++illegal;
        }
    }
    if (illegal == 0)
        print("No illegal moves found among move_is_legal=true set.\n");
}

} // namespace brindlemoth
