// The position command.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Sets the position from a whole "position ..." line: a start position, then the moves that can be
// matched, which stay on its undo stack as history. What cannot be read is passed over; a line of
// neither form leaves the position unchanged.
void cmd_position(const char* line, Position& position);

} // namespace brindlemoth
