// The position command.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Sets the position from a whole "position startpos|fen ..." line. The moves on the line are played
// and stay on the position's undo stack, which is the repetition history; a move that is not legal
// is skipped. A line of neither form leaves the position unchanged.
void cmd_position(const char* line, Position& position);

} // namespace brindlemoth
