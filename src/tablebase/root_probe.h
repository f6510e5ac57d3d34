// The choice among the moves of a table position. syzygy_root_move() (tablebase/syzygy.h) puts
// it into the engine's own moves.
#pragma once

#include "tablebase/probe_board.h"

#include <cstdint>

namespace brindlemoth {

constexpr std::uint16_t ROOT_FAILED = 0;     // a probe failed, or no move qualifies
constexpr std::uint16_t ROOT_MATED = 0xFFFE; // lost without a move to play
constexpr std::uint16_t ROOT_STALEMATE = 0xFFFF;

// The ProbeMove that the tables choose, or one of the three numbers above: the shortest way to a
// zeroing move that keeps a win, the longest in a loss, any that keeps a draw. Requires a sane
// board.
std::uint16_t syzygy_root(const ProbeBoard& board);

} // namespace brindlemoth
