// The process: start-up, then the command loop or one of two batch jobs, then shut-down. All of
// these end with exit status 0; only the endgame tables can end the process early, with 1, when the
// system refuses memory for their registry or the mapping of a file (tablebase/table_file.cpp).

#include "movegen/perft.h"
#include "shell/command_loop.h"
#include "shell/startup.h"
#include "shell/text.h"

#include <cstdio>
#include <cstring>

using namespace brindlemoth;

static void run_batch_bench(const char* depth_text) {
    constexpr int DEFAULT_DEPTH = 10;
    char line[32];
    std::snprintf(line, sizeof line, "bench %d",
                  depth_text != nullptr ? read_number(depth_text) : DEFAULT_DEPTH);
    Position position;
    position_set_fen(position, starting_fen);
    dispatch_command(line, position);
}

int main(int argc, char** argv) {
    start_engine();
    const char* const job = argc > 1 ? argv[1] : "";
    if (std::strcmp(job, "bench") == 0)
        run_batch_bench(argc > 2 ? argv[2] : nullptr);
    else if (std::strcmp(job, "perfttest") == 0)
        perft_suite();
    else
        command_loop();
    stop_engine();
    return 0;
}
