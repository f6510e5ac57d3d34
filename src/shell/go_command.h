// The go command.
#pragma once

#include "board/position.h"
#include "search/time_budget.h"

namespace brindlemoth {

// The limits that a whole "go ..." line asks for; words that are not known are passed over.
SearchLimits read_limits(const char* line);

// Answers from the book if it can, otherwise searches; returns when the bestmove line is out. The
// position is unchanged afterwards.
void cmd_go(const char* line, Position& position);

} // namespace brindlemoth
