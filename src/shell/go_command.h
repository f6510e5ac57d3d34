// The go command.
#pragma once

#include "board/position.h"
#include "search/time_budget.h"

namespace brindlemoth {

// Reads the limits of a whole "go ..." line. Unknown words are skipped; a limit that is not named
// is 0.
SearchLimits read_limits(const char* line);

// Prints the move of the opening book if there is one, otherwise searches. Returns after the
// bestmove line was printed. The position is unchanged afterwards.
void cmd_go(const char* line, Position& position);

} // namespace brindlemoth
