// The endgame table generator: see docs/tablegen.md, and command_line.cpp for what it takes.
#include "program/command_line.h"
#include "program/progress_line.h"
#include "program/tasks.h"

#include <cctype>
#include <cstdio>
#include <exception>
#include <new>

namespace brindlemoth::tablegen {

constexpr int WRONG_USAGE = 2; // exit status

int complain(std::string_view problem) {
    clear_progress();
    std::fputs("tablegen: ", stderr);
    // What the user typed may hold anything; the message stays one line.
    for (const char letter : problem)
        std::fputc(std::iscntrl(static_cast<unsigned char>(letter)) != 0 ? '?' : letter, stderr);
    std::fputc('\n', stderr);
    return 1;
}

static int run(const CommandLine& line) {
    if (!line.problem.empty()) {
        complain(line.problem);
        return WRONG_USAGE;
    }
    switch (line.task) {
    case Task::MAKE:
        return make_tables(line);
    case Task::VERIFY:
        return verify_tables(line);
    case Task::VERSION:
        std::fputs(version_text, stdout);
        return 0;
    default:
        std::fputs(help_text, stdout);
        return 0;
    }
}

} // namespace brindlemoth::tablegen

int main(int argc, char** argv) {
    using namespace brindlemoth::tablegen;
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    try {
        const int status = run(read_command_line({argv + 1, argv + argc}));
        const bool told = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
        return told ? status : complain("cannot write to standard output");
    } catch (const std::bad_alloc&) {
        return complain("not enough memory");
    } catch (const std::exception& failure) {
        return complain(failure.what());
    }
}
