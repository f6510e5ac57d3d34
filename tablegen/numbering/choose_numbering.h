// The choice of a stream's numbering: the one that leaves the fewest runs of equal values, because
// these compress best.
#pragma once

#include "numbering/numbering.h"

#include <functional>
#include <span>

namespace brindlemoth::tablegen {

// The positions of one side to move, in the order in which a stream stores their values.
struct NumberedSide {
    Side side;
    Numbering numbering;
};

// The number of runs of equal values at the indices from `first` to `last`, `last` not included.
using CountRuns =
    std::function<std::size_t(const NumberedSide&, std::uint64_t first, std::uint64_t last)>;

// Tries all numberings of these sides of a file position on samples.
NumberedSide choose_numbering(const Signature& signature, int file_position,
                              std::span<const Side> sides, const CountRuns& count_runs);

} // namespace brindlemoth::tablegen
