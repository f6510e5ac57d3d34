// What the user asked for.
#pragma once

#include "rules/signature.h"

#include <string>
#include <vector>

namespace brindlemoth::tablegen {

enum class Task { HELP, VERSION, MAKE, VERIFY };

struct CommandLine {
    Task task = Task::HELP;
    std::vector<Signature> wanted; // to make; to verify, where none stands for all of a directory
    std::string directory;
    int threads = 1;
    std::string problem; // when not empty, the command line makes no sense
};

// Reads the arguments without the program's name. Stops at the first problem.
CommandLine read_command_line(const std::vector<std::string>& arguments);

extern const char* const help_text;
extern const char* const version_text;

} // namespace brindlemoth::tablegen
