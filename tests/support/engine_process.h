// The built engine as a process of its own, driven through pipes as a front end does.
//
//     EngineProcess engine;
//     engine.send("uci");
//     engine.read_until("uciok");
//     EXPECT_TRUE(engine.finish().empty());
//
// An engine that hangs for HANG_GUARD_SECONDS ends the test program (set_hang_guard). No test may
// depend on its length. What the engine prints while it is sent a text must fit into a pipe (1
// MiB).
#pragma once

#include "support/support.h"

#include <cstdint>
#include <optional>

namespace brindlemoth {

constexpr unsigned HANG_GUARD_SECONDS = 120;

struct EngineProcess {
    // Starts the engine with these command line arguments. With an input file, standard input is
    // that file instead of a pipe, and send() must not be called.
    explicit EngineProcess(const std::vector<std::string>& arguments = {},
                           const std::string& input_file = "");
    // Kills the engine if it still runs.
    ~EngineProcess();
    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;

    // Writes the text as it is, or followed by a line feed. A text that the engine no longer takes
    // because it has ended is dropped.
    void send_text(const std::string& text) const;
    void send(const std::string& line) const { send_text(line + "\n"); }
    // The end of the engine's input.
    void close_input();

    // The next line of standard output without its line feed, nothing at the end of the output. A
    // last line without a line feed is a line.
    std::optional<std::string> read_line();
    // Reads up to and including the first line that begins with the prefix, and fails the test if
    // the output ends before. Returns all lines read.
    std::vector<std::string> read_until(const std::string& prefix);
    // Reads to the end of the output.
    std::vector<std::string> read_to_end();
    // Closes the input and reads to the end of the output. The process must end well, with nothing
    // written on standard error.
    std::vector<std::string> finish();
    // Waits for the end of the process. Its exit status, or the negative number of the signal
    // that ended it.
    int wait_for_exit();

    std::intptr_t process = -1;  // see start_process(), -1 when it has ended
    int input = -1, output = -1; // our ends of its standard input and output, -1 when closed
    int error_file = -1;         // where its standard error goes, see open_scratch()
    std::string pending;         // output read, not yet taken by read_line()
};

// Runs a program to its end, without input. Returns its exit status, or the negative number of the
// signal that ended it, and what it printed on standard output and standard error, its line ends as
// line feeds. With a script, a POSIX shell runs that first and then becomes the program.
struct ProgramRun {
    int status = 0;
    std::string output;
};
ProgramRun run_program(const std::string& program, const std::vector<std::string>& arguments,
                       const std::string& script = "");

// How many of the lines begin so.
int count_beginning(const std::vector<std::string>& lines, const std::string& prefix);

} // namespace brindlemoth
