// A stream of command lines through a real standard input, so that those behind a "go" arrive while
// its search runs. Lines that would take long, or lead out of the process, are made harmless.
#include "input/line_reader.h"
#include "input/poll_input.h"
#include "shell/command_loop.h"
#include "shell/startup.h"
#include "shell/text.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace brindlemoth;

static int input_writer;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    start_engine();
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[0], STDIN_FILENO) != STDIN_FILENO)
        std::abort();
    input_writer = ends[1];
    return 0;
}

// More officers than a game starts with make a search of any number of nodes long.
static bool is_crowded(const std::string& line) {
    const auto is_officer = [](char c) { return std::strchr("NBRQnbrq", c) != nullptr; };
    return std::count_if(line.begin(), line.end(), is_officer) > 16;
}

static std::string harmless(const std::string& line) {
    const auto contains = [&](const char* word) { return line.find(word) != std::string::npos; };
    if (contains("Hash") || contains("SyzygyPath") || (contains("position") && is_crowded(line)))
        return "setoption name Hash value 1";
    // The limit stands where it is read: in front of any NUL, in the first piece of a long line.
    if (begins_with(line.c_str(), "go"))
        return line.substr(0, std::min<std::size_t>(line.find('\0'), 1000)) + " nodes 2000";
    // The other pieces may be commands too.
    for (const char* word : {"perft", "bench"})
        if (begins_with(line.c_str(), word) || (contains(word) && line.size() > 1000))
            return std::string(word) + " 1";
    return contains("go") && line.size() > 1000 ? "" : line;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(std::string(data, data + size));
    std::string text = "setoption name Hash value 1\nsetoption name MultiPV value 1\n"
                       "setoption name OwnBook value false\nucinewgame\n";
    for (std::string line; text.size() < 5000 && std::getline(input, line);) // or it is slow
        text += harmless(line) + "\n";
    text += "\nquit\n";
    if (write(input_writer, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        std::abort();
    command_loop();
    // What stands behind a quit of the input itself is nobody's.
    char line[PENDING_LINE_SIZE];
    while (poll_line(line, PENDING_LINE_SIZE) || take_pending_line(line))
        continue;
    return 0;
}
