#include "eval/evaluate.h"
#include "eval_support.h"
#include "support/support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

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
    using testing::HasSubstr;

    // Black: a rook on an open file, two bishops, a safer king.
    const std::string black = trace_of("r1b1kb2/5ppp/8/8/8/8/8/4K3 b - - 0 1");
    EXPECT_THAT(black, HasSubstr("RooksW            MG:    +0  EG:    +0\n"));
    EXPECT_THAT(black, HasSubstr("RooksB            MG:   -47  EG:   -26\n"));
    EXPECT_THAT(black, HasSubstr("BishopPair          -22\n"));

    // A negative middle-game half takes one from the end game.
    const std::string isolated = trace_of("4k3/8/8/4p3/4P3/8/8/4K3 w - - 0 1");
    EXPECT_THAT(isolated, HasSubstr("Pawns             MG:    +0  EG:    +0\n"));
    const std::string borrowed = trace_of("4k3/4p3/8/8/4P3/P7/8/4K3 w - - 0 1");
    EXPECT_THAT(borrowed, HasSubstr("Pawns             MG:    +1  EG:    +8\n"));
    const std::string threatened = trace_of("4k3/8/8/8/2p5/3R4/8/4K3 w - - 0 1");
    EXPECT_THAT(threatened, HasSubstr("Threats           MG:   -60  EG:   -16\n"));

    // Material is printed although the total is a dead draw.
    const std::string dead = trace_of("4k3/8/8/8/8/8/8/4KN2 w - - 0 1");
    EXPECT_THAT(dead, HasSubstr("Phase: 1/24\n"));
    EXPECT_THAT(dead, HasSubstr("Material+PST      MG:  +309  EG:  +262\n"));
    EXPECT_THAT(dead, HasSubstr("Total (side-to-move): +0 cp\n"));

    EXPECT_THAT(trace_of("QQQQk3/QQQQ4/8/8/8/8/8/4K3 w - - 0 1"), HasSubstr("Phase: 24/24\n"));
    EXPECT_THAT(trace_of("8/8/8/8/8/8/8/8 w - - 0 1"), HasSubstr("Total (side-to-move): +0 cp\n"));
}

} // namespace
} // namespace brindlemoth
