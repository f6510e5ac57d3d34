// Commands for developers: the board, the benchmark, and self-checks of the move generator. All
// print on standard output and leave the working position unchanged. None can be interrupted.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// Prints the board and the fields of the position.
void print_board(const Position& position);

// Prints the number of leaves under each legal move and the total. Requires depth >= 1. A depth
// beyond the room on the undo stack counts as that room.
void perft_divide(Position& position, int depth);

// Counts the leaves of six positions and prints for each whether the number is the known one.
void perft_suite();

// Searches five positions to the depth, from cleared search memory, and prints the total of nodes.
// A depth below 1 means the default. The total depends only on depth and options: it is the
// signature of the program.
void cmd_bench(int depth);

// Prints the pseudo-legal moves that the generator lists twice.
void cmd_dupcheck(const Position& position);

// Prints the moves that move_is_legal() accepts although a second test, which looks up all attacks
// on the king after the move, finds the king in check.
void cmd_illegalcheck(const Position& position);

} // namespace brindlemoth
