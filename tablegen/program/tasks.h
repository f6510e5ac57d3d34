// The two things that the program does. Both return an exit status, after one line on standard
// error where something is wrong.
#pragma once

#include "program/command_line.h"

#include <string_view>

namespace brindlemoth::tablegen {

int make_tables(const CommandLine& line);
int verify_tables(const CommandLine& line);

// Prints "tablegen: ..." to standard error, a progress line taken off first, and returns 1.
int complain(std::string_view problem);

} // namespace brindlemoth::tablegen
