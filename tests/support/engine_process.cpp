#include "support/engine_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace brindlemoth {

using Clock = std::chrono::steady_clock;

static void close_descriptor(int& descriptor) {
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

static void fail_as_hung(EngineProcess& engine, const char* what) {
    ADD_FAILURE() << "the engine hangs: " << what;
    if (engine.process > 0)
        kill(engine.process, SIGKILL);
    close_descriptor(engine.input);
    close_descriptor(engine.output);
}

EngineProcess::EngineProcess(const std::vector<std::string>& arguments,
                             const std::string& input_file) {
    std::signal(SIGPIPE, SIG_IGN); // an engine that has ended is no reason to end the test
    int input_ends[2] = {-1, -1};
    int output_ends[2] = {-1, -1};
    if (input_file.empty()) {
        EXPECT_EQ(pipe2(input_ends, O_CLOEXEC), 0);
    } else {
        input_ends[0] = open(input_file.c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_GE(input_ends[0], 0) << input_file;
    }
    EXPECT_EQ(pipe2(output_ends, O_CLOEXEC), 0);
    std::string error_path = testing::TempDir() + "/engine_errors_XXXXXX";
    error_file = mkostemp(error_path.data(), O_CLOEXEC);
    EXPECT_GE(error_file, 0);
    unlink(error_path.c_str());

    std::vector<char*> words = {const_cast<char*>(BRINDLEMOTH_ENGINE)};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    process = fork();
    EXPECT_GE(process, 0);
    if (process == 0) {
        dup2(input_ends[0], STDIN_FILENO);
        dup2(output_ends[1], STDOUT_FILENO);
        dup2(error_file, STDERR_FILENO);
        std::signal(SIGPIPE, SIG_DFL);
        execv(words[0], words.data());
        _exit(127);
    }
    close_descriptor(input_ends[0]);
    close_descriptor(output_ends[1]);
    input = input_ends[1];
    output = output_ends[0];
    if (input >= 0)
        fcntl(input, F_SETFL, O_NONBLOCK);
}

EngineProcess::~EngineProcess() {
    if (process > 0) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    close_descriptor(input);
    close_descriptor(output);
    close_descriptor(error_file);
}

// Waits until output has come, or until input can be written if that is wanted. Takes what output
// there is. False when the time is up.
static bool wait_for_engine(EngineProcess& engine, bool to_write, Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    std::array<pollfd, 2> ends = {
        pollfd{engine.output, POLLIN, 0}, // poll() passes over a descriptor of -1
        pollfd{to_write ? engine.input : -1, POLLOUT, 0},
    };
    const int ready =
        poll(ends.data(), ends.size(), static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready == 0)
        return false;
    if (ready > 0 && ends[0].revents != 0) {
        std::array<char, 65536> buffer;
        const ssize_t count = read(engine.output, buffer.data(), buffer.size());
        if (count > 0)
            engine.pending.append(buffer.data(), static_cast<std::size_t>(count));
        else if (count == 0)
            close_descriptor(engine.output);
    }
    return true;
}

void EngineProcess::send_text(const std::string& text) {
    const auto deadline = Clock::now() + HANG_GUARD;
    std::size_t written = 0;
    while (written < text.size() && input >= 0) {
        const ssize_t count = write(input, text.data() + written, text.size() - written);
        if (count > 0)
            written += static_cast<std::size_t>(count);
        else if (errno == EPIPE)
            close_input();
        else if (!wait_for_engine(*this, true, deadline))
            fail_as_hung(*this, "it does not read its input");
    }
}

void EngineProcess::close_input() {
    close_descriptor(input);
}

std::optional<std::string> EngineProcess::read_line() {
    const auto deadline = Clock::now() + HANG_GUARD;
    std::size_t end = pending.find('\n');
    while (end == std::string::npos && output >= 0) {
        if (!wait_for_engine(*this, false, deadline))
            fail_as_hung(*this, "no line of output comes");
        end = pending.find('\n');
    }
    if (end == std::string::npos && pending.empty())
        return std::nullopt;
    std::string line = pending.substr(0, end);
    pending.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

std::vector<std::string> EngineProcess::read_until(const std::string& prefix) {
    std::vector<std::string> lines;
    while (std::optional<std::string> line = read_line()) {
        lines.push_back(*line);
        if (line->compare(0, prefix.size(), prefix) == 0)
            return lines;
    }
    ADD_FAILURE() << "the output ended without a line that begins with " << prefix;
    return lines;
}

std::vector<std::string> EngineProcess::read_to_end() {
    std::vector<std::string> lines;
    while (std::optional<std::string> line = read_line())
        lines.push_back(*line);
    return lines;
}

std::vector<std::string> EngineProcess::finish() {
    close_input();
    std::vector<std::string> lines = read_to_end();
    EXPECT_EQ(wait_for_exit(), 0);
    EXPECT_EQ(errors(), "");
    return lines;
}

int EngineProcess::wait_for_exit() {
    const auto deadline = Clock::now() + HANG_GUARD;
    while (process > 0) {
        int raw = 0;
        if (waitpid(process, &raw, WNOHANG) == process) {
            process = -1;
            status = WIFSIGNALED(raw) ? -WTERMSIG(raw) : WEXITSTATUS(raw);
        } else if (output >= 0) {
            if (!wait_for_engine(*this, false, deadline))
                fail_as_hung(*this, "it does not end");
        } else {
            if (Clock::now() > deadline)
                fail_as_hung(*this, "it does not end");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    return status;
}

std::string EngineProcess::errors() const {
    std::string text;
    std::array<char, 4096> buffer;
    ssize_t count = 0;
    while ((count = pread(error_file, buffer.data(), buffer.size(),
                          static_cast<off_t>(text.size()))) > 0)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    return text;
}

int count_beginning(const std::vector<std::string>& lines, const std::string& prefix) {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.starts_with(prefix);
    }));
}

} // namespace brindlemoth
