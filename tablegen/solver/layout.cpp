#include "solver/layout.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <tuple>
#include <utility>

namespace brindlemoth::tablegen {

// The white king's squares without pawns, in the order of their numbers.
constexpr std::array<std::uint8_t, 10> TRIANGLE = {0, 1, 2, 3, 9, 10, 11, 18, 19, 27};

static std::size_t number_in_triangle(std::size_t square) {
    const std::size_t rank = square / 8;
    return rank * (9 - rank) / 2 + square % 8 - rank;
}

// Brings the pawns into the order of their slots and the leading one to files a to d. Returns
// whether that mirrors the board.
static bool fold_pawns(Placement& pawns, std::size_t leading, std::size_t count) {
    // The leading pawn is on the outermost file, and the lowest rank there.
    auto place = [](std::uint8_t square) {
        return std::pair(std::min(square % 8, 7 - square % 8), square / 8);
    };
    std::iter_swap(pawns.begin(),
                   std::min_element(pawns.begin(), pawns.begin() + leading,
                                    [&](auto a, auto b) { return place(a) < place(b); }));
    const bool mirrored = pawns[0] % 8 > 3;
    for (std::size_t slot = 0; mirrored && slot < count; ++slot)
        pawns[slot] ^= 7;
    std::sort(pawns.begin() + 1, pawns.begin() + leading);
    std::sort(pawns.begin() + leading, pawns.begin() + count);
    return mirrored;
}

static std::size_t number_of(const Placement& placement, std::size_t pawns) {
    std::size_t number = 0;
    for (std::size_t slot = 0; slot < pawns; ++slot)
        number = number * PAWN_SQUARES + placement[slot] - 8U;
    return number;
}

// Calls visit(squares) for each way to put the pawns on different squares.
template <typename Visit> static void for_pawn_squares(std::size_t pawns, const Visit& visit) {
    std::size_t numbers = 1;
    for (std::size_t slot = 0; slot < pawns; ++slot)
        numbers *= PAWN_SQUARES;
    for (std::size_t number = 0; number < numbers; ++number) {
        Placement squares{};
        Squares taken = 0;
        std::size_t left = number;
        for (std::size_t slot = pawns; slot-- > 0; left /= PAWN_SQUARES) {
            squares[slot] = static_cast<std::uint8_t>(8 + left % PAWN_SQUARES);
            taken |= bit(squares[slot]);
        }
        if (std::popcount(taken) == static_cast<int>(pawns))
            visit(squares);
    }
}

static void list_chunks(Layout& layout, std::size_t leading) {
    // The part, and how many steps the pawns have still before them.
    auto order_of = [&](const Placement& pawns) {
        int to_go = 0;
        for (std::size_t slot = 0; slot < layout.pawns; ++slot)
            to_go += layout.side[slot] == WHITE ? 7 - pawns[slot] / 8 : pawns[slot] / 8;
        return std::tuple(pawns[0] % 8, to_go, pawns);
    };
    for_pawn_squares(layout.pawns, [&](const Placement& squares) {
        Placement folded = squares;
        if (!fold_pawns(folded, leading, layout.pawns) && folded == squares)
            layout.chunks.push_back(squares);
    });
    std::sort(layout.chunks.begin(), layout.chunks.end(),
              [&](const Placement& a, const Placement& b) { return order_of(a) < order_of(b); });
    std::vector<std::uint32_t> by_number;
    for (std::uint32_t chunk = 0; chunk < layout.chunks.size(); ++chunk) {
        const Placement& pawns = layout.chunks[chunk];
        if (chunk == 0 || pawns[0] % 8 != layout.chunks[chunk - 1][0] % 8)
            layout.part_start.push_back(chunk);
        const std::size_t number = number_of(pawns, layout.pawns);
        by_number.resize(std::max(by_number.size(), number + 1));
        by_number[number] = chunk;
    }
    for_pawn_squares(layout.pawns, [&](const Placement& squares) {
        Placement folded = squares;
        const std::uint32_t mirrored = fold_pawns(folded, leading, layout.pawns) ? 1 : 0;
        const std::size_t number = number_of(squares, layout.pawns);
        layout.chunk_number.resize(std::max(layout.chunk_number.size(), number + 1));
        layout.chunk_number[number] = 2 * by_number[number_of(folded, layout.pawns)] + mirrored;
    });
}

Layout make_layout(const Signature& signature) {
    assert(men_of(signature) <= MAX_SOLVED_MEN);
    Layout layout;
    layout.signature = signature;
    auto add = [&](Side side, Kind kind) {
        for (int i = 0; i < signature.count[side][kind]; ++i) {
            layout.kind[layout.men] = kind;
            layout.side[layout.men++] = side;
        }
    };
    const Side lead = leading_colour(signature);
    add(lead, PAWN);
    const std::size_t leading = layout.men;
    add(opponent(lead), PAWN);
    layout.pawns = layout.men;
    add(WHITE, KING);
    for (const Side side : {WHITE, BLACK})
        for (const Kind kind : {QUEEN, ROOK, BISHOP, KNIGHT})
            add(side, kind);
    add(BLACK, KING);
    layout.king_slot = {layout.pawns, layout.men - 1};
    int bits = 0;
    for (std::size_t slot = layout.men - 1; slot-- > layout.pawns; bits += 6)
        layout.shift[slot] = bits;
    if (layout.pawns == 0) {
        layout.chunk_words = TRIANGLE.size() << (bits - 6);
        layout.chunks = {Placement{}};
        layout.part_start = {0};
    } else {
        layout.chunk_words = std::size_t{1} << bits;
        list_chunks(layout, leading);
    }
    layout.part_start.push_back(layout.chunks.size());
    return layout;
}

Placement placement_of(const Layout& layout, std::size_t word) {
    Placement placement = layout.chunks[word / layout.chunk_words];
    const std::size_t within = word % layout.chunk_words;
    for (std::size_t slot = layout.pawns; slot + 1 < layout.men; ++slot)
        placement[slot] = static_cast<std::uint8_t>(within >> layout.shift[slot] & 63);
    if (layout.pawns == 0)
        placement[0] = TRIANGLE[within >> layout.shift[0]];
    return placement;
}

WordPlace word_of(const Layout& layout, const Placement& placement) {
    WordPlace place;
    std::size_t slot = layout.pawns;
    if (slot == 0) {
        place.reflection = geometry.folding[placement[0]];
        place.word = number_in_triangle(reflect(place.reflection, placement[0])) << layout.shift[0];
        ++slot;
    } else {
        const std::uint32_t number = layout.chunk_number[number_of(placement, layout.pawns)];
        place.reflection = number & 1;
        place.word = (number >> 1) * layout.chunk_words;
    }
    for (; slot + 1 < layout.men; ++slot)
        place.word += std::size_t{reflect(place.reflection, placement[slot])} << layout.shift[slot];
    return place;
}

std::array<std::size_t, 64> cells_by_white_king(const Layout& layout, const Placement& placement) {
    const bool folds = layout.pawns == 0;
    const std::uint32_t chunk = folds ? 0 : layout.chunk_number[number_of(placement, layout.pawns)];
    const std::size_t king_slot = layout.king_slot[WHITE];
    // The sum of the terms of the other men, by reflection.
    std::array<std::size_t, REFLECTIONS> others;
    others.fill(64 * (chunk >> 1) * layout.chunk_words);
    for (Reflection how = 0; how < REFLECTIONS; ++how) {
        others[how] += reflect(how, placement[layout.men - 1]);
        for (std::size_t slot = layout.pawns; slot + 1 < layout.men; ++slot)
            if (slot != king_slot)
                others[how] += std::size_t{reflect(how, placement[slot])}
                               << (layout.shift[slot] + 6);
    }
    std::array<std::size_t, 64> cells;
    for (std::size_t king = 0; king < cells.size(); ++king) {
        const Reflection how = folds ? geometry.folding[king] : chunk & 1;
        const std::size_t square = reflect(how, king);
        const std::size_t number = folds ? number_in_triangle(square) : square;
        cells[king] = others[how] + (number << (layout.shift[king_slot] + 6));
    }
    return cells;
}

} // namespace brindlemoth::tablegen
