// The built engine as a process of its own, driven through pipes as a front end does.
//
//     EngineProcess engine;
//     engine.send("uci");
//     engine.read_until("uciok");
//     engine.close_input();
//     EXPECT_EQ(engine.wait_for_exit(), 0);
//
// Nothing here waits longer than HANG_GUARD: when it passes, the test fails, the process is
// killed, and all further reads find the end of the output. No test may depend on its length.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace brindlemoth {

constexpr std::chrono::seconds HANG_GUARD{120};

struct EngineProcess {
    // Starts the engine with these command line arguments. With an input file, standard input is
    // that file instead of a pipe, and send() must not be called.
    explicit EngineProcess(const std::vector<std::string>& arguments = {},
                           const std::string& input_file = "");
    // Kills the engine if it still runs.
    ~EngineProcess();
    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;

    // Writes the text as it is, or followed by a line feed. What the engine prints meanwhile is
    // kept for the reads, so that neither side waits for the other. A text that the engine no
    // longer takes because it has ended is dropped.
    void send_text(const std::string& text);
    void send(const std::string& line) { send_text(line + "\n"); }
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

    // Closes the input and reads to the end of the output. The process must end well.
    std::vector<std::string> finish();

    // Waits for the end of the process. Its exit status, or the negative number of the signal
    // that ended it.
    int wait_for_exit();
    // What the engine has written on standard error so far.
    std::string errors() const;

    pid_t process = -1;
    int input = -1;  // write end of its standard input, -1 when closed
    int output = -1; // read end of its standard output, -1 at its end
    int error_file = -1;
    int status = 0;      // as wait_for_exit() returns it, once process is -1
    std::string pending; // output read, not yet taken by read_line()
};

// How many of the lines begin so.
int count_beginning(const std::vector<std::string>& lines, const std::string& prefix);

} // namespace brindlemoth
