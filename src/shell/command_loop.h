// The command loop: reads one line at a time and runs its command to the end. main() starts it.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Runs commands until "quit" or the end of the input.
void command_loop();

// Runs the command of one line on the working position. `line` has no line feed or carriage return
// at its end. A line that matches no command is ignored; "quit" is handled by command_loop() alone.
void dispatch_command(const char* line, Position& position);

} // namespace brindlemoth
