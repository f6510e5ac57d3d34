// From an index of a table file to the squares of the men: the dense numbering of the format, read
// from the writer's side. A stream chooses the order of its men and in which turn each group of
// them enters the index; the numbering then gives every index from 0 to positions - 1 a placement,
// and no two indices the same one.
#pragma once

#include "rules/signature.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace brindlemoth::tablegen {

// What a piece header says of one stream.
struct StreamOrder {
    // The turns, from 0, in which the first group and the other colour's pawns enter the index.
    int order = 0;
    int order2 = 15; // 15 without a second pawn group
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

// Whether the only single men are the two kings: they then lead, and not three single men.
bool kings_lead(const Signature& signature);

// The colour whose pawns lead: the one with fewer, but some. Requires pawns.
Side leading_colour(const Signature& signature);

// How many file positions the tables of a signature have: 1 without pawns, 4 with.
int file_positions(const Signature& signature);

// Every order that a stream of the signature can have. All sets of groups in every order, and all
// turns: some dozens for four men, a few thousand for six.
std::vector<StreamOrder> possible_orders(const Signature& signature);

enum class GroupKind : std::uint8_t { THREE_MEN, TWO_KINGS, LEADING_PAWNS, OTHER_PAWNS, MEN };

struct Group {
    GroupKind kind;
    std::size_t first; // place of its first man
    std::size_t size;
    std::uint64_t placements;
    std::uint64_t multiplier;
};

struct Numbering {
    std::size_t men = 0;
    int file_position = 0;
    std::uint64_t positions = 0;
    StreamOrder order;
    std::vector<Group> groups; // in order of their men
};

// Requires an order out of possible_orders() and a file position that the signature has.
Numbering make_numbering(const Signature& signature, int file_position, const StreamOrder& order);

// The squares of the men, in the stream's order, at an index below `positions`.
using FileSquares = std::array<std::uint8_t, MAX_FILE_MEN>;
FileSquares squares_at(const Numbering& numbering, std::uint64_t index);

} // namespace brindlemoth::tablegen
