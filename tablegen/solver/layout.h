// Where the solver keeps each position of a signature: a numbering of its own, made for speed and
// unlike that of the table files. Men stand in slots: pawns first (White's, then Black's), then
// the white king, the black king and the pieces. Like men have slots of their own, so that a
// position with two knights is kept under both orders.
//
// The man in slot 0 folds the board: the first pawn to files a-d, or without pawns the white king
// to the quarter a1-d4. The pawns' squares choose a chunk. The other men's squares, six bits each
// (four for a folded king), are the cell within the chunk, so that moving a man adds to a number.
#pragma once

#include "rules/signature.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace brindlemoth::tablegen {

// The square of each slot's man.
using Placement = std::array<std::uint8_t, 8>;

struct Layout {
    Signature signature;
    std::size_t men = 0;
    std::size_t pawns = 0; // slots 0 to pawns - 1
    std::array<Kind, 8> kind{};
    std::array<Side, 8> side{};
    std::array<std::size_t, 2> king_slot{};
    std::array<int, 8> shift{}; // place of a slot's square in the cell number; not for pawns
    std::size_t chunk_cells = 0;
    std::size_t chunks = 0;
};

Layout make_layout(const Signature& signature);

inline std::size_t cells_of(const Layout& layout) {
    return layout.chunks * layout.chunk_cells;
}

// How many positions one cell stands for: its reflections.
inline int images_of(const Layout& layout) {
    return layout.pawns == 0 ? 4 : 2;
}

// The placement that a cell stands for. Pawns are never on the first or last rank; two men may be
// on one square, as cells of no position exist too.
Placement placement_of(const Layout& layout, std::size_t cell);

// The cell of a placement, which need not be folded.
std::size_t cell_of(const Layout& layout, const Placement& placement);

} // namespace brindlemoth::tablegen
