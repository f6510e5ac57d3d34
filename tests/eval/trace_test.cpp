#include "eval/evaluate.h"
#include "eval_support.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

std::string trace_of(const char* fen) {
    const Position position = position_from(fen);
    testing::internal::CaptureStdout();
    eval_trace(position);
    return testing::internal::GetCapturedStdout();
}

TEST(EvalTrace, StartingPosition) {
    const char* const expected = "=== Evaluation Trace ===\n"
                                 "Phase: 24/24\n"
                                 "Material+PST      MG:    +0  EG:    +0\n"
                                 "Pawns             MG:    +0  EG:    +0\n"
                                 "Mobility          MG:    +0  EG:    +0\n"
                                 "RooksW            MG:    +0  EG:    +0\n"
                                 "RooksB            MG:    +0  EG:    +0\n"
                                 "Threats           MG:    +0  EG:    +0\n"
                                 "BishopPair           +0\n"
                                 "KingSafety        W: 0  B: 0  net: +0\n"
                                 "---\n"
                                 "Total (side-to-move): +20 cp\n";
    EXPECT_EQ(trace_of(starting_fen), expected);
    EXPECT_EQ(trace_of("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1"), expected);
}

TEST(EvalTrace, SignsAndSpecialLines) {
    const struct {
        const char *fen, *line;
    } rows[] = {
        // Black: a rook on an open file, two bishops.
        {"r1b1kb2/5ppp/8/8/8/8/8/4K3 b - - 0 1", "RooksB            MG:   -47  EG:   -26\n"},
        {"r1b1kb2/5ppp/8/8/8/8/8/4K3 b - - 0 1", "BishopPair          -22\n"},
        // A negative middle-game half takes one from the end game.
        {"4k3/8/8/8/2p5/3R4/8/4K3 w - - 0 1", "Threats           MG:   -60  EG:   -16\n"},
        // Material is printed although the total is a dead draw.
        {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "Material+PST      MG:  +309  EG:  +262\n"},
        {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", "Total (side-to-move): +0 cp\n"},
        {"QQQQk3/QQQQ4/8/8/8/8/8/4K3 w - - 0 1", "Phase: 24/24\n"},
        {"8/8/8/8/8/8/8/8 w - - 0 1", "Total (side-to-move): +0 cp\n"},
    };
    for (const auto& row : rows)
        EXPECT_NE(trace_of(row.fen).find(row.line), std::string::npos) << row.line;
}

} // namespace
} // namespace brindlemoth
