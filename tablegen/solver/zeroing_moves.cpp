#include "solver/zeroing_moves.h"

#include <bit>

namespace brindlemoth::tablegen {

Squares fixed_men(const Layout& layout, const Placement& placement) {
    Squares fixed = 0;
    for (std::size_t slot = 0; slot + 1 < layout.men; ++slot)
        fixed |= bit(placement[slot]);
    return fixed;
}

Squares legal_squares(const Layout& layout, const Placement& placement, Side side) {
    const Squares fixed = fixed_men(layout, placement);
    const std::size_t king = placement[layout.king_slot[WHITE]];
    if (static_cast<std::size_t>(std::popcount(fixed)) + 1 != layout.men)
        return 0; // two men on one square
    // The side that is not to move must not be in check.
    Squares impossible = fixed | geometry.attacks[WHITE][KING][king];
    for (std::size_t slot = 0; slot + 1 < layout.men; ++slot) {
        if (layout.side[slot] != side || layout.kind[slot] == KING)
            continue;
        const std::size_t from = placement[slot];
        if (side == BLACK) {
            if (attacks(BLACK, layout.kind[slot], from, king, fixed))
                impossible |= ~geometry.between[from][king];
            continue;
        }
        Squares attacked = geometry.attacks[WHITE][layout.kind[slot]][from];
        for (Squares blocking = attacked & fixed; blocking != 0; blocking &= blocking - 1)
            attacked &=
                ~geometry.behind[from][static_cast<std::size_t>(std::countr_zero(blocking))];
        impossible |= attacked;
    }
    return ~impossible;
}

// The values of a placement of this table for the side to move.
static WordValues values_at(const Table& table, const Placement& placement, Side side) {
    const WordPlace place = word_of(table.layout, placement);
    WordValues values = table.values[side][place.word];
    if (place.reflection != 0)
        for (Squares& squares : values)
            squares = reflect_all_back(place.reflection, squares);
    return values;
}

static AtLeast values_after(const Conversion& conversion, const Placement& placement, Side side) {
    Placement after{};
    for (std::size_t slot = 0; slot < conversion.table->layout.men; ++slot)
        after[slot] = placement[conversion.slot[slot]];
    return unpack(values_at(*conversion.table, after, side));
}

// Raises the values of one side by those of a move: it can be played with the black king on one of
// the squares `possible`, and `after` has the values for the other side then.
static void add_move(AtLeast& best, Squares possible, const AtLeast& after) {
    best[0] |= possible & after[0];
    for (std::size_t value = 1; value < best.size(); ++value)
        best[value] |= possible & after[0] & ~after[best.size() - value];
}

// Where the black king captures on a square, all squares that it can come from have the value of
// that square.
static AtLeast spread_square(AtLeast values, std::size_t square) {
    for (Squares& squares : values)
        squares = (squares >> square & 1) != 0 ? ~Squares{0} : 0;
    return values;
}

static bool on_last_rank(std::size_t square) {
    return square < 8 || square >= 56;
}

// A move that captures, promotes or both; without a promotion, `promoting` is the number of men.
static void add_conversion(AtLeast& best, const Table& table, std::size_t captured,
                           std::size_t promoting, const Placement& after, Side side,
                           Squares possible) {
    const bool promotes = promoting < table.layout.men;
    for (std::size_t kind = promotes ? KNIGHT : NO_KIND; kind <= (promotes ? QUEEN : NO_KIND);
         ++kind)
        add_move(best, possible,
                 values_after(
                     table.conversions[conversion_index(table.layout, captured, promoting, kind)],
                     after, opponent(side)));
}

AtLeast best_captures(const Table& table, const Placement& placement, Side side) {
    const Layout& layout = table.layout;
    AtLeast best{};
    const Squares fixed = fixed_men(layout, placement);
    for (std::size_t victim = 0; victim < layout.men; ++victim) {
        if (layout.side[victim] == side || layout.kind[victim] == KING)
            continue;
        const std::size_t target = placement[victim];
        for (std::size_t slot = 0; slot < layout.men; ++slot) {
            const Kind kind = layout.kind[slot];
            if (layout.side[slot] != side)
                continue;
            if (slot == layout.king_slot[BLACK]) {
                const AtLeast after = values_after(
                    table.conversions[conversion_index(layout, victim, layout.men, NO_KIND)],
                    placement, WHITE);
                add_move(best, geometry.attacks[BLACK][KING][target], spread_square(after, target));
                continue;
            }
            if (!attacks(side, kind, placement[slot], target, fixed))
                continue;
            Placement after = placement;
            after[slot] = static_cast<std::uint8_t>(target);
            add_conversion(best, table, victim,
                           kind == PAWN && on_last_rank(target) ? slot : layout.men, after, side,
                           ~geometry.between[placement[slot]][target]);
        }
    }
    return best;
}

// The values of the placement in which the pawn in slot `pushed` has just made a double step, for
// the side that may take it in passing.
static AtLeast values_with_en_passant(const Table& table, const Placement& placement, Side side,
                                      std::size_t pushed) {
    const Layout& layout = table.layout;
    const WordValues own = values_at(table, placement, side);
    const AtLeast without = unpack(own);
    const auto target = static_cast<std::uint8_t>(placement[pushed] + (side == WHITE ? 8 : -8));
    AtLeast best{};
    for (std::size_t slot = 0; slot < layout.pawns; ++slot) {
        if (layout.side[slot] != side ||
            (geometry.attacks[side][PAWN][placement[slot]] & bit(target)) == 0)
            continue;
        Placement after = placement;
        after[slot] = target;
        add_conversion(best, table, pushed, layout.men, after, side, ~Squares{0});
    }
    // Where there is nothing else to play, the capture is forced.
    const Squares forced = best[0] & own[2] & own[1];
    for (std::size_t value = 0; value < best.size(); ++value)
        best[value] = (best[value] & without[0]) | (without[value] & ~forced);
    return best;
}

AtLeast best_pawn_moves(const Table& table, const Placement& placement, Side side) {
    const Layout& layout = table.layout;
    const int forward = side == WHITE ? 8 : -8;
    AtLeast best{};
    const Squares fixed = fixed_men(layout, placement);
    for (std::size_t slot = 0; slot < layout.pawns; ++slot) {
        const int from = placement[slot];
        const int to = from + forward;
        if (layout.side[slot] != side || (fixed & bit(to)) != 0)
            continue;
        Placement after = placement;
        after[slot] = static_cast<std::uint8_t>(to);
        if (on_last_rank(after[slot])) {
            add_conversion(best, table, layout.men, slot, after, side, ~bit(to));
            continue;
        }
        add_move(best, ~bit(to), unpack(values_at(table, after, opponent(side))));
        const bool on_start = from / 8 == (side == WHITE ? 1 : 6);
        if (on_start && (fixed & bit(to + forward)) == 0) {
            after[slot] = static_cast<std::uint8_t>(to + forward);
            add_move(best, ~(bit(to) | bit(to + forward)),
                     values_with_en_passant(table, after, opponent(side), slot));
        }
    }
    return best;
}

} // namespace brindlemoth::tablegen
