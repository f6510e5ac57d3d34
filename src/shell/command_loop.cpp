#include "shell/command_loop.h"

#include "eval/evaluate.h"
#include "input/line_reader.h"
#include "input/poll_input.h"
#include "movegen/perft.h"
#include "platform/standard_output.h"
#include "search/history.h"
#include "search/transposition.h"
#include "shell/diagnostics.h"
#include "shell/go_command.h"
#include "shell/options.h"
#include "shell/position_command.h"
#include "shell/text.h"

#include <algorithm>
#include <cstring>

namespace brindlemoth {

namespace {

using Handler = void (*)(const char* line, Position& position);

struct Command {
    const char* word;
    bool whole_line; // the line equals the word; otherwise it only begins with it
    Handler run;
};

void run_uci(const char*, Position&) {
    print("id name Brindlemoth\n"
          "id author You\n"
          "option name Hash type spin default 64 min 1 max 2048\n"
          "option name Threads type spin default 1 min 1 max 1\n"
          "option name MultiPV type spin default 1 min 1 max 256\n"
          "option name OwnBook type check default false\n"
          "option name BookFile type string default champions.bin\n"
          "option name Style type combo default PeSTO var PeSTO var Linear\n"
          "option name SyzygyPath type string default <empty>\n"
          "uciok\n");
}

void run_isready(const char*, Position&) {
    print("readyok\n");
}

void run_ucinewgame(const char*, Position& position) {
    tt_clear();
    clear_history();
    position_set_fen(position, starting_fen);
}

void run_stop(const char*, Position&) {
    stop_flag = 1;
}

void run_setoption(const char* line, Position&) {
    cmd_setoption(line);
}

void run_d(const char*, Position& position) {
    print_board(position);
}

void run_perfttest(const char*, Position&) {
    perft_suite();
}

void run_perft(const char* line, Position& position) {
    perft_divide(position, std::max(read_number(line + std::strlen("perft")), 1));
}

void run_bench(const char* line, Position&) {
    constexpr int DEFAULT_DEPTH = 10;
    const int depth = read_number(line + std::strlen("bench"));
    cmd_bench(depth >= 1 ? depth : DEFAULT_DEPTH);
}

void run_eval(const char*, Position& position) {
    eval_trace(position);
}

void run_dupcheck(const char*, Position& position) {
    cmd_dupcheck(position);
}

void run_illegalcheck(const char*, Position& position) {
    cmd_illegalcheck(position);
}

// The first entry that matches is run: perfttest stands before perft.
constexpr Command COMMANDS[] = {
    {"uci", true, run_uci},
    {"isready", true, run_isready},
    {"ucinewgame", true, run_ucinewgame},
    {"position", false, cmd_position},
    {"go", false, cmd_go},
    {"stop", true, run_stop},
    {"setoption", false, run_setoption},
    {"d", true, run_d},
    {"perfttest", true, run_perfttest},
    {"perft", false, run_perft},
    {"bench", false, run_bench},
    {"eval", true, run_eval},
    {"dupcheck", true, run_dupcheck},
    {"illegalcheck", true, run_illegalcheck},
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
    static_assert(LINE_SIZE >= PENDING_LINE_SIZE);
    Position position;
    position_set_fen(position, starting_fen);
    char line[LINE_SIZE];
    // Lines that arrived during a search come before the next read.
    while (take_pending_line(line) || read_line(line, LINE_SIZE)) {
        if (std::strcmp(line, "quit") == 0)
            break;
        dispatch_command(line, position);
    }
}

} // namespace brindlemoth
