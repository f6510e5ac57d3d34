// From a solved endgame to its two table files. Chooses for each stream what the format leaves
// open so that it compresses well: the order of the men, the values of positions that no reader
// will look up, the side to move that the DTZ file stores, the value maps.
#pragma once

#include "file/table_file.h"
#include "solver/solver.h"

#include <cstdint>

namespace brindlemoth::tablegen {

// The WDL values that may be stored for a position, bit 0 for -2 to bit 4 for 2: its own value;
// where its best capture is as good, that or any smaller one; where a capture wins, anything.
using WdlChoice = std::uint8_t;
constexpr WdlChoice ANY_WDL = 0x1F;
WdlChoice wdl_choice(const Table& table, const Placement& placement, Side side);

// Whether readers look a position up in the DTZ file that stores this side to move: it is not
// drawn, and no capture or pawn move wins at once.
bool dtz_matters(const Table& table, const Placement& placement, Side side);

// Both take a table that has its distances. Signatures with the same men on both sides store one
// side to move.
TableFile make_wdl_file(const Table& table, int threads, const Progress& progress);
TableFile make_dtz_file(const Table& table, int threads, const Progress& progress);

} // namespace brindlemoth::tablegen
