// A FEN and moves, "FEN moves e2e4 ...", and then all that shows or checks a position. Assertions
// hold the record against itself.
#include "shell/command_loop.h"
#include "shell/startup.h"

#include <string>

using namespace brindlemoth;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    start_engine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Position position;
    const std::string line = "position fen " + std::string(data, data + size);
    dispatch_command(line.c_str(), position);
    for (const char* const command : {"d", "eval", "perft 1", "dupcheck", "illegalcheck"})
        dispatch_command(command, position);
    return 0;
}
