// Commands for developers: the benchmark and two self-checks of the move generator. All print on
// standard output and leave the working position unchanged.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Searches five positions to the depth (at least 1) from cleared search memory and prints the sum.
// The node total depends only on depth and options: it is the signature of the program.
void cmd_bench(int depth);

// Looks for moves that the generator lists twice.
void cmd_dupcheck(const Position& position);

// Checks every move that move_is_legal() accepts by a test written out from the attack tables.
void cmd_illegalcheck(Position& position);

} // namespace brindlemoth
