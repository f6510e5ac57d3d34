#include "shell/command_loop.h"

#include "board/fen.h"
#include "eval/evaluate.h"
#include "input/line_reader.h"
#include "input/poll_input.h"
#include "platform/standard_output.h"
#include "search/search_state.h"
#include "shell/diagnostics.h"
#include "shell/go_command.h"
#include "shell/options.h"
#include "shell/position_command.h"
#include "shell/text.h"

#include <algorithm>
#include <cstring>

namespace brindlemoth {

namespace {

// The longest line that the command loop reads, with the terminator. A longer line arrives in
// pieces.
constexpr int LINE_SIZE = 4096;
static_assert(LINE_SIZE >= PENDING_LINE_SIZE);

using Handler = void (*)(const char* line, Position& position);

struct Command {
    const char* word;
    bool whole_line; // true: the line must equal the word; false: it must begin with the word
    Handler run;
};

// The first entry that matches is run, so perfttest must stand before perft. Any line that begins
// with "go" is a go command, "goodbye" too.
constexpr Command COMMANDS[] = {
    {"uci", true, [](const char*, Position&) { cmd_uci(); }},
    {"isready", true, [](const char*, Position&) { print("readyok\n"); }},
    {"ucinewgame", true,
     [](const char*, Position& position) {
         clear_search_memory();
         position_set_fen(position, starting_fen);
     }},
    {"position", false, cmd_position},
    {"go", false, cmd_go},
    {"stop", true, [](const char*, Position&) { stop_flag = 1; }},
    {"setoption", false, [](const char* line, Position&) { cmd_setoption(line); }},
    {"d", true, [](const char*, Position& position) { print_board(position); }},
    {"perfttest", true, [](const char*, Position&) { perft_suite(); }},
    {"perft", false,
     [](const char* line, Position& position) {
         perft_divide(position, std::max(read_number(line + std::strlen("perft")), 1));
     }},
    {"bench", false,
     [](const char* line, Position&) { cmd_bench(read_number(line + std::strlen("bench"))); }},
    {"eval", true, [](const char*, Position& position) { eval_trace(position); }},
    {"dupcheck", true, [](const char*, Position& position) { cmd_dupcheck(position); }},
    {"illegalcheck", true, [](const char*, Position& position) { cmd_illegalcheck(position); }},
};

} // namespace

void dispatch_command(const char* line, Position& position) {
    for (const Command& command : COMMANDS) {
        if (command.whole_line ? std::strcmp(line, command.word) == 0
                               : begins_with(line, command.word)) {
            command.run(line, position);
            return;
        }
    }
}

void command_loop() {
    Position position;
    position_set_fen(position, starting_fen);
    char line[LINE_SIZE];
    // The lines of the queue arrived before those that read_line() returns.
    while (take_pending_line(line) || read_line(line, LINE_SIZE)) {
        if (std::strcmp(line, "quit") == 0)
            break;
        dispatch_command(line, position);
    }
}

} // namespace brindlemoth
