#include "numbering/cell_walk.h"

#include <algorithm>

namespace brindlemoth::tablegen {

constexpr std::uint8_t NO_SQUARE = 64;

// The cells of all squares of the white king are found together for rows of at least this length.
constexpr std::size_t LONG_ROW = 8;

static Placement placement_of(const CellWalk& walk) {
    Placement placement{};
    for (std::size_t man = 0; man < walk.layout.men; ++man)
        placement[walk.slot[man]] = walk.walk.squares[man];
    return placement;
}

CellWalk cell_walk_from(const Layout& layout, const Numbering& numbering, std::uint64_t index) {
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
        made.has_term[man] = slot >= std::max<std::size_t>(layout.pawns, 1);
        made.shift[man] = slot + 1 == layout.men ? 0 : layout.shift[slot] + 6;
        if (!made.has_term[man])
            made.folding_men = man + 1;
    }
    made.folding_squares.fill(NO_SQUARE);
    return made;
}

static std::uint32_t term(const CellWalk& walk, std::size_t man, std::uint8_t square) {
    return walk.has_term[man] ? std::uint32_t{reflect(walk.reflection, square)} << walk.shift[man]
                              : 0;
}

// Whether the men who fold the board and choose the chunk stand as they did.
static bool folds_alike(const CellWalk& walk) {
    for (std::size_t man = 0; man < walk.folding_men; ++man)
        if (!walk.has_term[man] && walk.walk.squares[man] != walk.folding_squares[man])
            return false;
    return true;
}

// Updates the sums after a step of the walk.
static void add_terms(CellWalk& walk) {
    const std::size_t men = walk.layout.men;
    std::size_t changed = walk.walk.changed;
    if (changed < walk.folding_men && !folds_alike(walk)) {
        walk.folding_squares = walk.walk.squares;
        const Placement placement = placement_of(walk);
        const WordPlace place = word_of(walk.layout, placement);
        walk.reflection = place.reflection;
        walk.sum[0] = static_cast<std::uint32_t>(64 * place.word) +
                      reflect(place.reflection, placement[men - 1]);
        for (std::size_t man = 0; man < men; ++man)
            walk.sum[0] -= term(walk, man, walk.walk.squares[man]);
        changed = 0;
    }
    for (std::size_t man = changed; man < men; ++man)
        walk.sum[man + 1] = walk.sum[man] + term(walk, man, walk.walk.squares[man]);
}

std::size_t take_cells(CellWalk& walk, CellBatch& cells, std::uint64_t wanted) {
    const std::size_t men = walk.layout.men;
    Row row;
    std::size_t count = 0;
    while (count < wanted && count + row.square.size() <= cells.size()) {
        const std::size_t moving = moving_man(*walk.walk.numbering);
        if (!walk.has_term[moving]) {
            Placement placement = placement_of(walk);
            take_row(walk.walk, row);
            if (walk.layout.pawns == 0 && row.length >= LONG_ROW) {
                // The man who folds a board without pawns is the white king.
                const auto by_king = cells_by_white_king(walk.layout, placement);
                for (std::size_t i = 0; i < row.length; ++i)
                    cells[count++] = static_cast<std::uint32_t>(by_king[row.square[i]]);
                continue;
            }
            for (std::size_t i = 0; i < row.length; ++i) {
                placement[walk.slot[moving]] = row.square[i];
                cells[count++] = static_cast<std::uint32_t>(cell_of(walk.layout, placement));
            }
            continue;
        }
        add_terms(walk);
        take_row(walk.walk, row);
        const std::uint32_t others = walk.sum[men] - term(walk, moving, row.square[0]);
        const auto& reflected = geometry.reflected[walk.reflection];
        const int shift = walk.shift[moving];
        for (std::size_t i = 0; i < row.length; ++i)
            cells[count + i] = others + (std::uint32_t{reflected[row.square[i]]} << shift);
        count += row.length;
    }
    return count;
}

Placement placement_at(const Layout& layout, const Numbering& numbering, std::uint64_t index) {
    return placement_of(cell_walk_from(layout, numbering, index));
}

} // namespace brindlemoth::tablegen
