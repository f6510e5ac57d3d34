// The whole perft suite as a batch job: seconds in a release build, minutes with sanitizers.
#include "support/engine_process.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(PerftTest, RunsFromTheCommandLineAndEnds) {
    EngineProcess engine({"perfttest", "extra"});
    engine.send("d"); // would be answered if the command loop were entered
    const std::vector<std::string> lines = engine.finish();
    ASSERT_EQ(lines.size(), 10U);
    EXPECT_EQ(lines.front(), "Running perft test suite (6 positions)...");
    EXPECT_EQ(lines.back(), "6/6 passed");
}

} // namespace
} // namespace brindlemoth
