#include "eval/evaluate.h"
#include "support/support.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

// Black to move has a rook on an open file and two bishops. The negative middle-game half of a
// score takes one from its end game, which a half that is turned afterwards does not.
TEST(EvalTrace, Lines) {
    testing::internal::CaptureStdout();
    eval_trace(position_from("r1b1kb2/5ppp/8/8/2p5/3R4/3Q4/4K3 b - - 0 1"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "=== Evaluation Trace ===\n"
                                                      "Phase: 10/24\n"
                                                      "Material+PST      MG:   -49  EG:    -9\n"
                                                      "Pawns             MG:   -65  EG:  -118\n"
                                                      "Mobility          MG:   -90  EG:   -45\n"
                                                      "RooksW            MG:   +47  EG:   +26\n"
                                                      "RooksB            MG:   -47  EG:   -26\n"
                                                      "Threats           MG:   -60  EG:   -16\n"
                                                      "BishopPair          -22\n"
                                                      "KingSafety        W: 52  B: 68  net: +16\n"
                                                      "---\n"
                                                      "Total (side-to-move): +269 cp\n");
}

} // namespace
} // namespace brindlemoth
