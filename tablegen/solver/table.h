// An endgame in memory: the values of its positions, and the tables that captures and promotions
// lead to.
#pragma once

#include "solver/layout.h"
#include "solver/word_values.h"

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brindlemoth::tablegen {

constexpr int FIFTY_MOVES = 100; // plies; table files know no other limit

struct Table;

// Where a position stands after a capture, a promotion or both: the other table, and for each of
// its slots the slot that the man had before.
struct Conversion {
    const Table* table = nullptr;
    std::array<std::uint8_t, MAX_SLOTS> slot{};
};

struct Table {
    Layout layout;
    // By side to move and word.
    std::array<std::vector<WordValues>, 2> values;
    std::vector<Conversion> conversions; // by conversion_index()
};

// The number of men stands for no captured slot and for no promoting slot, NO_KIND for no
// promotion.
inline std::size_t conversion_index(const Layout& layout, std::size_t captured,
                                    std::size_t promoting, std::size_t promoted) {
    return (captured * (layout.men + 1) + promoting) * KINDS + promoted;
}

// All tables solved so far, by name. A table may be there under both names, with the colours of
// all its men exchanged.
using TableSet = std::map<std::string, std::unique_ptr<Table>>;

// A table without values, with its conversions by captures. All that it converts into must be in
// the set, under either name; what is there under the other name only is added under the one that
// is needed.
std::unique_ptr<Table> prepare_table(const Signature& signature, TableSet& tables);

// Adds the conversions by promotions without a capture to a prepared table, under the same terms.
void add_promotions(Table& table, TableSet& tables);

// The same endgame with the colours of all men exchanged, without what it converts into.
std::unique_ptr<Table> exchange_colours(const Table& table);

} // namespace brindlemoth::tablegen
