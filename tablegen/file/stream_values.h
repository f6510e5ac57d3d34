// The values of a stream as runs, in the order of its indices. Where no reader looks a value up, or
// several values do, these choose what makes the fewest runs.
#pragma once

#include "compression/compress.h"
#include "numbering/choose_numbering.h"
#include "solver/solver.h"

namespace brindlemoth::tablegen {

// A raw DTZ value, before the value maps: the number of its map (0 wins, 1 losses, 2 cursed wins,
// 3 blessed losses) in the bits from MAP_SHIFT on. Below stand the plies beyond the shortest
// distance of the map, which is 1, or 101 for the last two.
constexpr int MAP_SHIFT = 12;
constexpr std::uint16_t RAW_PLIES = (1 << MAP_SHIFT) - 1;

// How many runs the values at the indices from `first` to `last` make, `last` not included.
std::size_t count_wdl_runs(const Part& part, const NumberedSide& stream, std::uint64_t first,
                           std::uint64_t last);
std::size_t count_dtz_runs(const Part& part, const NumberedSide& stream, std::uint64_t first,
                           std::uint64_t last);

// All values of a stream. A WDL value is stored plus 2.
std::vector<ValueRun> wdl_runs(const Part& part, const NumberedSide& stream, Progress progress);
std::vector<ValueRun> raw_dtz_runs(const Part& part, const NumberedSide& stream, Progress progress);

} // namespace brindlemoth::tablegen
