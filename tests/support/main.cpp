// Every test program runs on an engine that has been started.

#include "shell/startup.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    brindlemoth::start_engine();
    const int status = RUN_ALL_TESTS();
    brindlemoth::stop_engine();
    return status;
}
