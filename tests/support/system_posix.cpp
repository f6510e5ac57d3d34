#include "support/system.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brindlemoth {

const bool on_posix = true;
const char* const null_device = "/dev/null";
const char* const line_end = "\n";

bool make_pipe(int (&ends)[2]) {
    if (pipe2(ends, O_CLOEXEC) != 0)
        return false;
    fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
    return true;
}

int open_to_read(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

int open_scratch() {
    std::string path = testing::TempDir() + "/scratch_XXXXXX";
    const int scratch = mkostemp(path.data(), O_CLOEXEC);
    unlink(path.c_str());
    return scratch;
}

std::string read_scratch(int scratch) {
    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(pread(scratch, text.data(), text.size(), 0)));
    return text;
}

std::intptr_t start_process(const std::vector<std::string>& words, int input, int output,
                            int error) {
    std::signal(SIGPIPE, SIG_IGN); // a program that has ended is no reason to end the test
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(input, STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(error, STDERR_FILENO);
        std::signal(SIGPIPE, SIG_DFL);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    return process;
}

int wait_for_process(std::intptr_t process) {
    int raw = 0;
    EXPECT_EQ(waitpid(static_cast<pid_t>(process), &raw, 0), process);
    return WIFSIGNALED(raw) ? -WTERMSIG(raw) : WEXITSTATUS(raw);
}

void kill_process(std::intptr_t process) {
    kill(static_cast<pid_t>(process), SIGKILL);
    waitpid(static_cast<pid_t>(process), nullptr, 0);
}

void set_hang_guard(unsigned seconds) {
    alarm(seconds);
}

bool make_named_pipe(const std::string& path) {
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    return true;
}

} // namespace brindlemoth
