#include "solver/table.h"

#include <cassert>
#include <utility>

namespace brindlemoth::tablegen {

// The slots of a table with the same men, or with all colours exchanged, matched with the men left
// after a conversion.
static Conversion match_slots(const Layout& left, std::size_t captured, const Table& table,
                              bool exchanged) {
    Conversion made;
    made.table = &table;
    const Layout& after = table.layout;
    std::array<bool, MAX_SLOTS> used{};
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

// Adds the conversions by captures of a slot, with and without a promotion; those by promotions
// alone where `captured` is the number of men.
static void add_conversions(Table& table, TableSet& tables, std::size_t captured) {
    const Layout& layout = table.layout;
    const std::size_t none = layout.men;
    const auto add = [&](std::size_t promoting, std::size_t promoted) {
        table.conversions[conversion_index(layout, captured, promoting, promoted)] =
            make_conversion(layout, tables, captured, promoting, promoted);
    };
    if (captured != none)
        add(none, NO_KIND);
    for (std::size_t pawn = 0; pawn < layout.pawns; ++pawn)
        for (std::size_t kind = KNIGHT; kind <= QUEEN; ++kind)
            if (captured == none || layout.side[captured] != layout.side[pawn])
                add(pawn, kind);
}

std::unique_ptr<Table> prepare_table(const Signature& signature, TableSet& tables) {
    auto table = std::make_unique<Table>();
    table->layout = make_layout(signature);
    const Layout& layout = table->layout;
    for (const Side side : {WHITE, BLACK})
        table->values[side].resize(words_of(layout));
    table->conversions.resize(conversion_index(layout, layout.men + 1, 0, 0));
    for (std::size_t captured = 0; captured < layout.men; ++captured)
        if (layout.kind[captured] != KING)
            add_conversions(*table, tables, captured);
    return table;
}

void add_promotions(Table& table, TableSet& tables) {
    add_conversions(table, tables, table.layout.men);
}

} // namespace brindlemoth::tablegen
