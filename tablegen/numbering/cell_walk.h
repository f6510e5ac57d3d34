// The meeting of the two numberings: the solver's cell for each index of a stream, in order.
#pragma once

#include "numbering/numbering.h"
#include "solver/layout.h"

namespace brindlemoth::tablegen {

// Requires that layout and numbering are of the same signature, and outlive it.
struct CellWalk {
    const Layout& layout;
    Walk walk;
    std::array<std::uint8_t, MAX_FILE_MEN> slot{}; // of each man in the stream's order
    std::size_t cell = 0;
    Reflection reflection = 0; // that leads to the cell
};
CellWalk cells_from(const Layout& layout, const Numbering& numbering, std::uint64_t index);
void advance(CellWalk& walk);

inline Placement placement_of(const CellWalk& walk) {
    Placement placement{};
    for (std::size_t man = 0; man < walk.layout.men; ++man)
        placement[walk.slot[man]] = walk.walk.squares[man];
    return placement;
}

} // namespace brindlemoth::tablegen
