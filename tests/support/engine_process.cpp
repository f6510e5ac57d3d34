#include "support/engine_process.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace brindlemoth {

static void close_descriptor(int& descriptor) {
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

EngineProcess::EngineProcess(const std::vector<std::string>& arguments,
                             const std::string& input_file) {
    std::signal(SIGPIPE, SIG_IGN); // an engine that has ended is no reason to end the test
    int input_ends[2] = {-1, -1};
    int output_ends[2] = {-1, -1};
    if (input_file.empty())
        EXPECT_EQ(pipe2(input_ends, O_CLOEXEC), 0);
    else
        input_ends[0] = open(input_file.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(pipe2(output_ends, O_CLOEXEC), 0);
    fcntl(output_ends[1], F_SETPIPE_SZ, 1 << 20);
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
        prctl(PR_SET_PDEATHSIG, SIGKILL);
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
}

EngineProcess::~EngineProcess() {
    if (process > 0) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    alarm(0);
    close_descriptor(input);
    close_descriptor(output);
    close_descriptor(error_file);
}

void EngineProcess::send_text(const std::string& text) const {
    alarm(HANG_GUARD_SECONDS);
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = write(input, text.data() + written, text.size() - written);
        if (count <= 0)
            return;
        written += static_cast<std::size_t>(count);
    }
}

void EngineProcess::close_input() {
    close_descriptor(input);
}

std::optional<std::string> EngineProcess::read_line() {
    alarm(HANG_GUARD_SECONDS);
    std::array<char, 65536> buffer;
    std::size_t end = 0;
    while ((end = pending.find('\n')) == std::string::npos) {
        const ssize_t count = read(output, buffer.data(), buffer.size());
        if (count <= 0) {
            if (pending.empty())
                return std::nullopt;
            return std::exchange(pending, "");
        }
        pending.append(buffer.data(), static_cast<std::size_t>(count));
    }
    std::string line = pending.substr(0, end);
    pending.erase(0, end + 1);
    return line;
}

std::vector<std::string> EngineProcess::read_until(const std::string& prefix) {
    std::vector<std::string> lines;
    while (std::optional<std::string> line = read_line()) {
        lines.push_back(*line);
        if (line->starts_with(prefix))
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
    alarm(HANG_GUARD_SECONDS);
    int raw = 0;
    EXPECT_EQ(waitpid(process, &raw, 0), process);
    process = -1;
    return WIFSIGNALED(raw) ? -WTERMSIG(raw) : WEXITSTATUS(raw);
}

std::string EngineProcess::errors() const {
    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(pread(error_file, text.data(), text.size(), 0)));
    return text;
}

int count_beginning(const std::vector<std::string>& lines, const std::string& prefix) {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.starts_with(prefix);
    }));
}

} // namespace brindlemoth
