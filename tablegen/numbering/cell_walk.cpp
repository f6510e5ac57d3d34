#include "numbering/cell_walk.h"

#include <algorithm>

namespace brindlemoth::tablegen {

static void find_cell(CellWalk& walk) {
    const Placement placement = placement_of(walk);
    const WordPlace place = word_of(walk.layout, placement);
    walk.reflection = place.reflection;
    walk.cell = 64 * place.word + reflect(place.reflection, placement[walk.layout.men - 1]);
}

CellWalk cells_from(const Layout& layout, const Numbering& numbering, std::uint64_t index) {
    CellWalk made{layout, walk_from(numbering, index)};
    unsigned used = 0;
    for (std::size_t man = 0; man < layout.men; ++man) {
        const std::uint8_t piece = numbering.order.piece[man];
        std::size_t slot = 0;
        while ((used >> slot & 1) != 0 || layout.kind[slot] != kind_of(piece) ||
               layout.side[slot] != side_of(piece))
            ++slot;
        used |= 1U << slot;
        made.slot[man] = static_cast<std::uint8_t>(slot);
    }
    find_cell(made);
    return made;
}

void advance(CellWalk& walk) {
    const FileSquares before = walk.walk.squares;
    const std::size_t man = advance(walk.walk);
    const std::size_t slot = man == MANY_MEN ? 0 : walk.slot[man];
    // A man that neither folds the board nor chooses the chunk makes a term of the cell's number.
    if (man == MANY_MEN || slot < std::max<std::size_t>(walk.layout.pawns, 1)) {
        find_cell(walk);
        return;
    }
    const bool king = slot + 1 == walk.layout.men;
    const int shift = king ? 0 : walk.layout.shift[slot] + 6;
    walk.cell += std::size_t{reflect(walk.reflection, walk.walk.squares[man])} << shift;
    walk.cell -= std::size_t{reflect(walk.reflection, before[man])} << shift;
}

} // namespace brindlemoth::tablegen
