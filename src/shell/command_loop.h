// The conversation with a front end: one line at a time, each command run to its end. main()
// starts the loop; the batch benchmark dispatches a single line.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// The room for one line of input, with the terminator; a longer line arrives in pieces.
constexpr int LINE_SIZE = 4096;

// Runs commands until "quit" or the end of the input.
void command_loop();

// Performs the command of one trimmed line on the working position. A line that is no command is
// ignored. Only "quit" is not known here.
void dispatch_command(const char* line, Position& position);

} // namespace brindlemoth
