#include "movegen/perft.h"
#include "shell/startup.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    brindlemoth::start_engine();
    if (argc > 1 && std::strcmp(argv[1], "perfttest") == 0)
        brindlemoth::perft_suite();
    brindlemoth::stop_engine();
    return 0;
}
