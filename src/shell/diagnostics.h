// Commands for developers: the benchmark and two self-checks of the move generator. All print on
// standard output and leave the working position unchanged.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Searches five positions to the depth, from cleared search memory, and prints the total of nodes.
// A depth below 1 means the default, 10. The total depends only on depth and options: it is the
// signature of the program.
void cmd_bench(int depth);

// Prints the pseudo-legal moves that the generator lists twice.
void cmd_dupcheck(const Position& position);

// Prints the moves that move_is_legal() accepts although a second test, which looks up all attacks
// on the king after the move, finds the king in check.
void cmd_illegalcheck(Position& position);

} // namespace brindlemoth
