// Squares, sets of them, the ways men move, and the reflections of the board. Squares run a1 = 0,
// b1 = 1, ... h8 = 63. Tables are made once at start-up by walking rays.
#pragma once

#include "rules/signature.h"

#include <array>
#include <cstdint>

namespace brindlemoth::tablegen {

using Squares = std::uint64_t;            // a set of squares, bit 0 is a1
constexpr std::uint8_t PAWN_SQUARES = 48; // from the second rank to the seventh

constexpr Squares bit(int square) {
    return Squares{1} << square;
}

// A list of squares reached in one direction, nearest first.
struct Ray {
    std::uint8_t length = 0;
    std::array<std::uint8_t, 7> square{};
};

// The reflections that map the board onto itself: bit 0 exchanges left and right, bit 1 top and
// bottom, bit 2 reflects in the diagonal a1-h8 after that.
using Reflection = unsigned;
constexpr Reflection LEFT_RIGHT = 1;
constexpr Reflection TOP_BOTTOM = 2;
constexpr Reflection DIAGONAL = 4;
constexpr std::size_t REFLECTIONS = 8;

struct Geometry {
    // Squares that a man attacks on an empty board, by side (matters to pawns), kind and square.
    std::array<std::array<std::array<Squares, 64>, KINDS>, 2> attacks{};
    // Squares strictly between two squares on one line; empty for squares on no common line.
    std::array<std::array<Squares, 64>, 64> between{};
    // Squares that a man on the second square hides from one on the first.
    std::array<std::array<Squares, 64>, 64> behind{};
    // The moves of kings and knights are eight rays of length 0 or 1.
    std::array<std::array<std::array<Ray, 8>, 64>, KINDS> rays{};
    std::array<std::size_t, KINDS> ray_count{};
    std::array<std::array<std::uint8_t, 64>, REFLECTIONS> reflected{};
    // The reflection that brings a square to the triangle a1-d1-d4; none for a square there.
    std::array<Reflection, 64> folding{};
};

extern const Geometry geometry;

// Whether the man standing on `from` attacks `to` when the squares in `occupied` are taken.
inline bool attacks(Side side, Kind kind, std::size_t from, std::size_t to, Squares occupied) {
    return (geometry.attacks[side][kind][from] >> to & 1) != 0 &&
           (geometry.between[from][to] & occupied) == 0;
}

// Where a square, or each of a set, goes in a reflection, and where it comes from.
inline std::uint8_t reflect(Reflection how, std::size_t square) {
    return geometry.reflected[how][square];
}
Squares reflect_all(Reflection how, Squares squares);
Squares reflect_all_back(Reflection how, Squares squares);

// All squares to the left and right of one of the set.
constexpr Squares beside(Squares squares) {
    constexpr Squares A_FILE = 0x0101010101010101;
    return (squares << 1 & ~A_FILE) | (squares & ~A_FILE) >> 1;
}

// All squares that a king on one of the set attacks.
constexpr Squares king_steps(Squares squares) {
    const Squares row = squares | beside(squares);
    return beside(squares) | row << 8 | row >> 8;
}

} // namespace brindlemoth::tablegen
