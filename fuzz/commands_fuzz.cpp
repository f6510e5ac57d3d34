// A stream of command lines through a real standard input, so that those behind a "go" arrive while
// its search runs. Lines that would take long, or lead out of the process, are made harmless.
#include "input/line_reader.h"
#include "input/poll_input.h"
#include "platform/clock.h"
#include "search/search_state.h"
#include "search/transposition.h"
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

// The clock counts nodes, so that an input always does the same. It is read after each iteration
// and at each check of the limits, and stops every search after a few nodes.
std::int64_t brindlemoth::tick_count() {
    constexpr std::uint64_t ENOUGH_NODES = 60;
    if (node_count >= ENOUGH_NODES)
        stop_flag = 1;
    return static_cast<std::int64_t>(node_count);
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    start_engine();
    tt_resize(1);
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
        return "d";
    // The pieces of a long line may be commands too.
    for (const char* word : {"perft", "bench"})
        if (begins_with(line.c_str(), word) || (contains(word) && line.size() > 1000))
            return std::string(word) + " 1";
    return line;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Searches take nearly all of the time: clear after them alone, and allow a few.
    constexpr int MOST_SEARCHES = 3;
    constexpr std::size_t MOST_TEXT = 3000;
    static int searches = 0;
    std::istringstream input(std::string(data, data + size));
    std::string text = "setoption name MultiPV value 1\nsetoption name OwnBook value false\n";
    if (searches > 0)
        text += "ucinewgame\n";
    searches = 0;
    for (std::string line; text.size() < MOST_TEXT && std::getline(input, line);) {
        line = harmless(line);
        searches += line.find("go") != std::string::npos || line == "bench 1" ? 1 : 0;
        if (searches <= MOST_SEARCHES)
            text += line + "\n";
    }
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
