// The solver's cell for each index of a stream, in order: it connects the two numberings.
#pragma once

#include "numbering/numbering.h"
#include "solver/layout.h"

#include <span>

namespace brindlemoth::tablegen {

// Requires a layout and a numbering of the same signature. Both must outlive the walk.
struct CellWalk {
    const Layout& layout;
    Walk walk;
    std::array<std::uint8_t, MAX_FILE_MEN> slot{}; // of each man in the stream's order
    // The number of a cell is a sum with a term for each man that neither folds the board nor
    // chooses the chunk: the man's reflected square, shifted. All others together have one
    // term; they are among the first `folding_men`.
    std::array<bool, MAX_FILE_MEN> has_term{};
    std::array<int, MAX_FILE_MEN> shift{};
    std::size_t folding_men = 0;
    FileSquares folding_squares{}; // of all men, when the reflection was found
    Reflection reflection = 0;
    std::array<std::uint32_t, MAX_FILE_MEN + 1> sum{}; // with the terms of so many men
};
CellWalk cell_walk_from(const Layout& layout, const Numbering& numbering, std::uint64_t index);

constexpr std::size_t CELL_BATCH = 512;
using CellBatch = std::array<std::uint32_t, CELL_BATCH>;

// The cells of the next indices, row by row, until there are as many as wanted or no further row
// fits in; returns how many. After the last index comes the first.
std::size_t take_cells(CellWalk& walk, CellBatch& cells, std::uint64_t wanted = CELL_BATCH);

// Where the men stand at an index.
Placement placement_at(const Layout& layout, const Numbering& numbering, std::uint64_t index);

} // namespace brindlemoth::tablegen
