// A solved endgame in memory, and what captures and pawn moves lead to in it and in others. Looked
// at a word at a time: all squares of the black king at once.
//
// Values are those of table files. A WDL value runs from -2 (loss) over -1 (a loss that the
// fifty-move rule makes a draw), 0, 1 (a win that the rule makes a draw) to 2 (win).
#pragma once

#include "solver/layout.h"

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brindlemoth::tablegen {

constexpr int FIFTY_MOVES = 100; // plies; table files know no other limit

// The values of a word: three bits for each square of the black king, low bits first. The number
// is the value plus 3; 0 stands for no legal position, 6 for stalemate, where a difference is made.
using WordValues = std::array<Squares, 3>;

// The same by value plus 2: where it is as much or more. The first is where there is any.
using AtLeast = std::array<Squares, 5>;

WordValues pack(const AtLeast& values);
AtLeast unpack(const WordValues& values);

struct Table;

// Where a position stands after a capture, a promotion or both: the other table, and for each of
// its slots the slot that the man had before.
struct Conversion {
    const Table* table = nullptr;
    std::array<std::uint8_t, 8> slot{};
};

struct Table {
    Layout layout;
    // The greatest distance of a win that the fifty-move rule does not spoil, in plies.
    int limit = FIFTY_MOVES;
    // By side to move and word.
    std::array<std::vector<WordValues>, 2> values;
    // By captured slot, promoting slot (the number of men where there is none) and promoted kind.
    std::vector<Conversion> conversions;
};

// All tables solved so far, by name. A table may be there under both names, with the colours of
// all its men exchanged.
using TableSet = std::map<std::string, std::unique_ptr<Table>>;

// The squares of all men but the black king.
Squares fixed_men(const Layout& layout, const Placement& placement);

// Where the black king can stand so that the position is legal with that side to move.
Squares legal_squares(const Layout& layout, const Placement& placement, Side side);

// The best values that the side to move reaches by legal captures, en passant left out, and by
// legal pawn moves that capture nothing (promotions among them).
AtLeast best_captures(const Table& table, const Placement& placement, Side side);
AtLeast best_pawn_moves(const Table& table, const Placement& placement, Side side);

// Prepares a table without values. All that it converts into (by captures, if no more is asked)
// must be in the set, under either name; what is there under the other name only is added under the
// one that is needed.
std::unique_ptr<Table> make_table(const Signature& signature, TableSet& tables, int limit,
                                  bool captures_only = false);

// The same endgame with the colours of all men exchanged, without what it converts into.
std::unique_ptr<Table> exchange_colours(const Table& table);

// Gives what has no value that of the same position: with like men exchanged, or in the other image
// that the folding leaves. Where several have one, each keeps its own.
void share_values(Table& table);

} // namespace brindlemoth::tablegen
