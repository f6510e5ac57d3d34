#include "movegen/perft.h"

#include "board/make_move.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "platform/standard_output.h"

#include <algorithm>

namespace brindlemoth {

const PerftCase perft_cases[PERFT_CASE_COUNT] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 5, 4865609, "startpos depth 5"},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5, 193690690,
     "kiwipete depth 5"},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6, 11030083, "pos3 depth 6"},
    {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 5, 15833292,
     "pos4 depth 5"},
    {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 5, 89941194, "pos5 depth 5"},
    {"r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/p1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 5, 180719404,
     "pos6 depth 5"},
};

std::uint64_t perft(Position& position, int depth) {
    if (depth == 0)
        return 1;
    if (depth == 1)
        return static_cast<std::uint64_t>(count_legal(position));
    Move buffer[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, buffer);
    const LegalityMasks masks = legality_masks(position);
    std::uint64_t count = 0;
    for (const Move* move = buffer; move != end; ++move) {
        if (!move_is_legal(position, masks, *move))
            continue;
        make_move(position, *move);
        count += perft(position, depth - 1);
        unmake_move(position, *move);
    }
    return count;
}

void perft_divide(Position& position, int depth) {
    // Nothing is counted deeper than the undo stack has room.
    depth = std::min(depth, MAX_UNDO - position.undo_count);
    Move buffer[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, buffer);
    const LegalityMasks masks = legality_masks(position);
    std::uint64_t total = 0;
    for (const Move* move = buffer; move != end; ++move) {
        if (!move_is_legal(position, masks, *move))
            continue;
        make_move(position, *move);
        const std::uint64_t count = perft(position, depth - 1);
        unmake_move(position, *move);
        print("%s: %llu\n", move_to_text(*move), static_cast<unsigned long long>(count));
        total += count;
    }
    print("Total: %llu\n", static_cast<unsigned long long>(total));
}

void perft_suite() {
    print("Running perft test suite (%d positions)...\n\n", PERFT_CASE_COUNT);
    int passed = 0;
    for (const PerftCase& test : perft_cases) {
        Position position;
        position_set_fen(position, test.fen);
        const std::uint64_t count = perft(position, test.depth);
        const bool pass = count == test.expected;
        passed += pass ? 1 : 0;
        print("[%s] %s  got %llu  expected %llu\n", pass ? "PASS" : "FAIL", test.label,
              static_cast<unsigned long long>(count),
              static_cast<unsigned long long>(test.expected));
    }
    print("\n%d/%d passed\n", passed, PERFT_CASE_COUNT);
}

} // namespace brindlemoth
