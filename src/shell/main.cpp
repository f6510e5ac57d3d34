// The program: start-up, then the command loop or one of two batch jobs, then shut-down. The exit
// status is 0 in every case but one: the endgame tables end the process with status 1 if the system
// refuses memory for their registry or the mapping of a file (tablebase/table_file.cpp).

#include "shell/command_loop.h"
#include "shell/diagnostics.h"
#include "shell/startup.h"
#include "shell/text.h"

#include <cstring>

using namespace brindlemoth;

int main(int argc, char** argv) {
    start_engine();
    const char* const job = argc > 1 ? argv[1] : "";
    if (std::strcmp(job, "bench") == 0)
        cmd_bench(argc > 2 ? read_number(argv[2]) : 0);
    else if (std::strcmp(job, "perfttest") == 0)
        perft_suite();
    else
        command_loop();
    stop_engine();
    return 0;
}
