// The two things that the program does. Both return an exit status, after one line on standard
// error where something is wrong.
#pragma once

#include "program/command_line.h"

#include <string>

namespace brindlemoth::tablegen {

int make_tables(const CommandLine& line);
int verify_tables(const CommandLine& line);

// Prints "tablegen: ..." to standard error, a progress line taken off first, and returns 1.
int complain(const std::string& problem);
int complain(const char* problem);

} // namespace brindlemoth::tablegen
