// Perft: the number of leaves of the tree of legal moves, the test of the board and move code.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

// The number of leaves at that depth, which is at least 0 and at most the room on the undo stack.
// The position is unchanged afterwards.
std::uint64_t perft(Position& position, int depth);

} // namespace brindlemoth
