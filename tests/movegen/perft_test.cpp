#include "board/fen.h"
#include "movegen/legality.h"
#include "movegen/perft.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// The suite at its full depth is the perfttest command's; these counts are as telling and quick
// enough for every build.
TEST(Perft, KnownCounts) {
    struct Row {
        const char* fen;
        std::uint64_t counts[4]; // depth 1 upward
    };
    const Row rows[] = {
        {starting_fen, {20, 400, 8902, 197281}},
        {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
         {48, 2039, 97862, 4085603}},
        {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", {14, 191, 2812, 43238}},
        {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
         {6, 264, 9467, 422333}},
        {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", {44, 1486, 62379, 2103487}},
    };
    for (const Row& row : rows) {
        Position position = position_from(row.fen);
        EXPECT_EQ(perft(position, 0), 1U);
        for (int depth = 1; depth <= 4 && row.counts[depth - 1] < 500000; ++depth)
            EXPECT_EQ(perft(position, depth), row.counts[depth - 1]) << row.fen << ' ' << depth;
    }
}

} // namespace
} // namespace brindlemoth
