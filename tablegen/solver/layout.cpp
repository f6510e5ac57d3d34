#include "solver/layout.h"

namespace brindlemoth::tablegen {

// The first pawn stands on one of 24 squares of files a-d, every other one on one of 48.
constexpr std::size_t FOLDED_PAWN_SQUARES = 24;
constexpr std::size_t PAWN_SQUARES = 48;

Layout make_layout(const Signature& signature) {
    Layout layout;
    layout.signature = signature;
    auto add = [&](Side side, Kind kind) {
        for (int i = 0; i < signature.count[side][kind]; ++i) {
            layout.kind[layout.men] = kind;
            layout.side[layout.men++] = side;
        }
    };
    add(WHITE, PAWN);
    add(BLACK, PAWN);
    layout.pawns = layout.men;
    layout.king_slot = {layout.men, layout.men + 1};
    for (const Kind kind : {KING, QUEEN, ROOK, BISHOP, KNIGHT}) {
        add(WHITE, kind);
        add(BLACK, kind);
    }
    layout.chunks = layout.pawns == 0 ? 1 : FOLDED_PAWN_SQUARES;
    for (std::size_t slot = 1; slot < layout.pawns; ++slot)
        layout.chunks *= PAWN_SQUARES;
    int bits = 0;
    for (std::size_t slot = layout.men; slot-- > layout.pawns;) {
        layout.shift[slot] = bits;
        bits += slot == 0 ? 4 : 6;
    }
    layout.chunk_cells = std::size_t{1} << bits;
    return layout;
}

Placement placement_of(const Layout& layout, std::size_t cell) {
    Placement placement{};
    std::size_t within = cell % layout.chunk_cells;
    std::size_t chunk = cell / layout.chunk_cells;
    for (std::size_t slot = layout.men; slot-- > layout.pawns;) {
        const std::size_t code = within >> layout.shift[slot];
        placement[slot] =
            static_cast<std::uint8_t>(slot == 0 ? (code & 3) | (code & 12) << 1 : code & 63);
    }
    for (std::size_t slot = layout.pawns; slot-- > 1;) {
        placement[slot] = static_cast<std::uint8_t>(8 + chunk % PAWN_SQUARES);
        chunk /= PAWN_SQUARES;
    }
    if (layout.pawns != 0)
        placement[0] = static_cast<std::uint8_t>(8 + chunk / 4 * 8 + chunk % 4);
    return placement;
}

std::size_t cell_of(const Layout& layout, const Placement& placement) {
    const unsigned first = placement[0];
    unsigned mirror = (first & 4) != 0 ? 7 : 0;
    if (layout.pawns == 0 && (first & 32) != 0)
        mirror ^= 56;
    const unsigned folded = first ^ mirror;
    std::size_t chunk = 0;
    std::size_t within = 0;
    if (layout.pawns == 0) {
        within = static_cast<std::size_t>((folded & 3) | (folded & 24) >> 1) << layout.shift[0];
    } else {
        chunk = (folded / 8 - 1) * 4 + (folded & 3);
        for (std::size_t slot = 1; slot < layout.pawns; ++slot)
            chunk = chunk * PAWN_SQUARES + ((placement[slot] ^ mirror) - 8);
    }
    for (std::size_t slot = layout.pawns == 0 ? 1 : layout.pawns; slot < layout.men; ++slot)
        within |= static_cast<std::size_t>(placement[slot] ^ mirror) << layout.shift[slot];
    return chunk * layout.chunk_cells + within;
}

} // namespace brindlemoth::tablegen
