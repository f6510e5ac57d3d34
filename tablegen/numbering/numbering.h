// From an index of a table file to the squares of the men. The index is a number in a mixed radix,
// with a digit for each group of men; the digit of like men is the number of their squares in the
// combinatorial number system. A stream chooses the order of its men and which digit each group is.
// The numbering then gives every index from 0 to positions - 1 a placement, and no two indices the
// same one.
#pragma once

#include "rules/signature.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace brindlemoth::tablegen {

constexpr int NO_TURN = 15; // of a second pawn group, where there is none

// What a piece header says of one stream.
struct StreamOrder {
    // The turns, from 0, in which the first group and the other colour's pawns enter the index.
    int order = 0;
    int order2 = NO_TURN;
    // Piece code of each man: a Kind, plus 8 for the second colour.
    std::array<std::uint8_t, MAX_FILE_MEN> piece{};

    bool operator==(const StreamOrder&) const = default;
};

constexpr Kind kind_of(std::uint8_t piece) {
    return static_cast<Kind>(piece & 7);
}
constexpr Side side_of(std::uint8_t piece) {
    return (piece & 8) != 0 ? BLACK : WHITE;
}

// Every order that a stream of the signature can have. All sets of groups in every order, and all
// turns: some dozens for four men, a few thousand for six.
std::vector<StreamOrder> possible_orders(const Signature& signature);

// The squares of the men, in the stream's order.
using FileSquares = std::array<std::uint8_t, MAX_FILE_MEN>;

// Men that enter the index together: the leading ones, the other colour's pawns, or like men.
struct Group {
    std::size_t first; // place of its first man
    std::size_t size;
    std::uint8_t lowest_square; // pawns have no first rank
    std::uint64_t placements;
    std::uint64_t multiplier;
};

struct Numbering {
    std::size_t men = 0;
    std::uint64_t positions = 0;
    StreamOrder order;
    std::vector<Group> groups;               // in order of their men
    std::vector<std::size_t> turns;          // the groups from the one that varies fastest
    const std::vector<FileSquares>* leading; // the placements of the first group
};

// Requires an order out of possible_orders() and a file position that the signature has.
Numbering make_numbering(const Signature& signature, int file_position, const StreamOrder& order);

// An index on its way through a numbering. The numbering must outlive it.
struct Walk {
    const Numbering* numbering;
    FileSquares squares{};
    std::array<std::uint64_t, MAX_FILE_MEN> place{}; // of each group
    // Of the men of a later group: the members of their combination, before the squares that are
    // taken are skipped; least first.
    FileSquares member{};
    // Squares that the men of groups before the fastest one take, and those of groups after it.
    std::uint64_t before = 0;
    std::uint64_t after = 0;
    // The first man, in the stream's order, that the last step has moved.
    std::size_t changed = 0;
};
Walk walk_from(const Numbering& numbering, std::uint64_t index);

// Successive indices whose placements differ in the square of one man.
struct Row {
    std::size_t man;    // its place in the stream's order
    std::size_t length; // at least 1
    std::array<std::uint8_t, 64> square;
};
// The longest row that begins at the walk's index. The walk goes to the index after it, from the
// last index to the first.
void take_row(Walk& walk, Row& row);

// The only man of which take_row() makes rows.
std::size_t moving_man(const Numbering& numbering);

} // namespace brindlemoth::tablegen
