#include "solver/table.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <utility>

namespace brindlemoth::tablegen {

constexpr std::size_t KINDS = 7;

WordValues pack(const AtLeast& values) {
    return {(values[0] & ~values[1]) | (values[2] & ~values[3]) | values[4], values[1] & ~values[3],
            values[3]};
}

AtLeast unpack(const WordValues& values) {
    const auto& [low, middle, high] = values;
    const Squares legal = low | middle | high;
    return {legal, middle | high, (middle & low) | high, high & ~middle, high & ~middle & low};
}

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

static const Conversion& conversion(const Table& table, std::size_t captured, std::size_t promoting,
                                    std::size_t promoted) {
    const std::size_t slots = table.layout.men + 1;
    return table.conversions[(captured * slots + promoting) * KINDS + promoted];
}

// The values of a placement of this table for the side to move.
static AtLeast values_at(const Table& table, const Placement& placement, Side side) {
    const WordPlace place = word_of(table.layout, placement);
    WordValues values = table.values[side][place.word];
    if (place.reflection != 0)
        for (Squares& squares : values)
            squares = reflect_all_back(place.reflection, squares);
    return unpack(values);
}

static AtLeast values_after(const Conversion& conversion, const Placement& placement, Side side) {
    Placement after{};
    for (std::size_t slot = 0; slot < conversion.table->layout.men; ++slot)
        after[slot] = placement[conversion.slot[slot]];
    return values_at(*conversion.table, after, side);
}

// Where a move by one side can be played, and leads to these values for the other.
static void add_move(AtLeast& best, Squares possible, const AtLeast& after) {
    best[0] |= possible & after[0];
    for (std::size_t value = 1; value < best.size(); ++value)
        best[value] |= possible & after[0] & ~after[best.size() - value];
}

// What the black king takes on a square has one outcome, wherever it comes from.
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
                 values_after(conversion(table, captured, promoting, kind), after, opponent(side)));
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
                const AtLeast after =
                    values_after(conversion(table, victim, layout.men, NO_KIND), placement, WHITE);
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
    const AtLeast without = values_at(table, placement, side);
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
    const WordPlace place = word_of(layout, placement);
    const WordValues& own = table.values[side][place.word];
    const Squares forced = best[0] & reflect_all_back(place.reflection, own[2] & own[1]);
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
        add_move(best, ~bit(to), values_at(table, after, opponent(side)));
        const bool on_start = from / 8 == (side == WHITE ? 1 : 6);
        if (on_start && (fixed & bit(to + forward)) == 0) {
            after[slot] = static_cast<std::uint8_t>(to + forward);
            add_move(best, ~(bit(to) | bit(to + forward)),
                     values_with_en_passant(table, after, opponent(side), slot));
        }
    }
    return best;
}

// The slots of a table with the same men, or with all colours exchanged, matched with the men left
// after a conversion.
static Conversion match_slots(const Layout& left, std::size_t captured, const Table& table,
                              bool exchanged) {
    Conversion made;
    made.table = &table;
    const Layout& after = table.layout;
    std::array<bool, 8> used{};
    for (std::size_t to = 0; to < after.men; ++to) {
        const Side side = exchanged ? opponent(after.side[to]) : after.side[to];
        std::size_t from = 0;
        while (used[from] || from == captured || left.kind[from] != after.kind[to] ||
               left.side[from] != side)
            ++from;
        used[from] = true;
        made.slot[to] = static_cast<std::uint8_t>(from);
    }
    return made;
}

std::unique_ptr<Table> exchange_colours(const Table& table) {
    auto made = std::make_unique<Table>();
    made->layout = make_layout(exchange_sides(table.layout.signature));
    made->limit = table.limit;
    const Conversion slots = match_slots(made->layout, made->layout.men, table, true);
    for (const Side side : {WHITE, BLACK})
        made->values[side].resize(words_of(made->layout));
    for (std::size_t word = 0; word < words_of(made->layout); ++word) {
        const Placement placement = placement_of(made->layout, word);
        Placement before{};
        for (std::size_t slot = 0; slot < table.layout.men; ++slot)
            before[slot] = placement[slots.slot[slot]] ^ 56;
        const std::array<std::size_t, 64> cells = cells_by_white_king(table.layout, before);
        for (const Side side : {WHITE, BLACK}) {
            const std::vector<WordValues>& values = table.values[opponent(side)];
            WordValues exchanged{};
            for (std::size_t king = 0; king < 64; ++king) {
                const std::size_t cell = cells[king ^ 56];
                for (std::size_t i = 0; i < exchanged.size(); ++i)
                    exchanged[i] |= (values[cell / 64][i] >> cell % 64 & 1) << king;
            }
            made->values[side][word] = exchanged;
        }
    }
    return made;
}

static const Table& oriented_table(const Signature& signature, TableSet& tables) {
    std::unique_ptr<Table>& table = tables[name_of(signature)];
    if (table == nullptr) {
        const auto other = tables.find(name_of(exchange_sides(signature)));
        assert(other != tables.end());
        table = exchange_colours(*other->second);
    }
    return *table;
}

static Conversion make_conversion(const Layout& before, TableSet& tables, std::size_t captured,
                                  std::size_t promoting, std::size_t promoted) {
    Layout left = before;
    if (promoting < before.men)
        left.kind[promoting] = static_cast<Kind>(promoted);
    Signature signature;
    for (std::size_t slot = 0; slot < left.men; ++slot)
        if (slot != captured)
            ++signature.count[left.side[slot]][left.kind[slot]];
    return match_slots(left, captured, oriented_table(signature, tables), false);
}

std::unique_ptr<Table> make_table(const Signature& signature, TableSet& tables, int limit,
                                  bool captures_only) {
    auto table = std::make_unique<Table>();
    table->layout = make_layout(signature);
    table->limit = limit;
    const Layout& layout = table->layout;
    for (const Side side : {WHITE, BLACK})
        table->values[side].resize(words_of(layout));
    const std::size_t none = layout.men;
    const std::size_t slots = none + 1;
    table->conversions.resize(slots * slots * KINDS);
    for (std::size_t i = 0; i < table->conversions.size(); ++i) {
        const std::size_t captured = i / KINDS / slots;
        const std::size_t promoting = i / KINDS % slots;
        const std::size_t kind = i % KINDS;
        const bool captures = captured < none && layout.kind[captured] != KING;
        const bool promotes = promoting < layout.pawns && kind >= KNIGHT && kind <= QUEEN &&
                              (captured == none || layout.side[captured] != layout.side[promoting]);
        const bool possible = promotes ? captures || (captured == none && !captures_only)
                                       : captures && promoting == none && kind == NO_KIND;
        if (possible)
            table->conversions[i] = make_conversion(layout, tables, captured, promoting, kind);
    }
    return table;
}

// Calls visit() for each order of like men from `slot` on, other than the black king. Pawns are a
// set already.
template <typename Visit>
static void for_orders(const Layout& layout, Placement& placement, std::size_t slot,
                       const Visit& visit) {
    if (slot + 1 >= layout.men) {
        visit();
        return;
    }
    for (std::size_t other = slot;
         layout.kind[other] == layout.kind[slot] && layout.side[other] == layout.side[slot];
         ++other) {
        std::swap(placement[slot], placement[other]);
        for_orders(layout, placement, slot + 1, visit);
        std::swap(placement[slot], placement[other]);
    }
}

// Whether the board has the same pawns when it is mirrored.
static bool pawns_mirror(const Layout& layout, const Placement& placement) {
    std::array<Squares, 2> pawns{};
    for (std::size_t slot = 0; slot < layout.pawns; ++slot)
        pawns[layout.side[slot]] |= bit(placement[slot]);
    return std::all_of(pawns.begin(), pawns.end(),
                       [](Squares side) { return reflect_all(LEFT_RIGHT, side) == side; });
}

// Takes values of another word, whose board is reflected, where there are none yet.
static void add_values(Table& table, std::size_t word, std::size_t other, Reflection reflection) {
    for (std::vector<WordValues>& values : table.values) {
        WordValues& own = values[word];
        const Squares missing = ~(own[0] | own[1] | own[2]);
        for (std::size_t i = 0; i < own.size(); ++i)
            own[i] |= missing & reflect_all_back(reflection, values[other][i]);
    }
}

void share_values(Table& table) {
    const Layout& layout = table.layout;
    const Reflection reflection = layout.pawns == 0 ? DIAGONAL : LEFT_RIGHT;
    for (std::size_t word = 0; word < words_of(layout); ++word) {
        Placement placement = placement_of(layout, word);
        // With the white king on the diagonal, or pawns on either side alike, there is an image.
        const bool mirrors = layout.pawns == 0 ? placement[0] % 8 == placement[0] / 8
                                               : pawns_mirror(layout, placement);
        for_orders(layout, placement, layout.pawns, [&] {
            add_values(table, word, word_of(layout, placement).word, 0);
            Placement image = placement;
            for (std::size_t slot = layout.pawns; mirrors && slot < layout.men; ++slot)
                image[slot] = reflect(reflection, placement[slot]);
            if (mirrors)
                add_values(table, word, word_of(layout, image).word, reflection);
        });
    }
}

} // namespace brindlemoth::tablegen
