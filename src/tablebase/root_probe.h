// Choosing a move by the tables. syzygy_root_move() (tablebase/syzygy.h) turns the choice into a
// move of the engine.
#pragma once

#include "tablebase/probe_board.h"

#include <cstdint>

namespace brindlemoth {

constexpr std::uint16_t ROOT_FAILED = 0;     // a probe failed, or no move qualifies
constexpr std::uint16_t ROOT_MATED = 0xFFFE; // lost, and there is no legal move
constexpr std::uint16_t ROOT_STALEMATE = 0xFFFF;

// Returns the ProbeMove that the tables choose, or one of the three numbers above. Of the moves
// that keep a win it is the one with the shortest distance to a zeroing move, of losing moves the
// one with the longest. In a draw it is any drawing move. Requires a sane board.
std::uint16_t syzygy_root(const ProbeBoard& board);

} // namespace brindlemoth
