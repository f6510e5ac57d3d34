// Squares and the ways men move, for the solver alone: tables made once at start-up by walking
// rays, and the attack test built on them. Squares run a1 = 0, b1 = 1, ... h8 = 63.
#pragma once

#include "rules/signature.h"

#include <array>
#include <cstdint>

namespace brindlemoth::tablegen {

using Squares = std::uint64_t; // a set of squares, bit 0 is a1

constexpr Squares bit(int square) {
    return Squares{1} << square;
}

// A list of squares reached in one direction, nearest first.
struct Ray {
    std::uint8_t length = 0;
    std::array<std::uint8_t, 7> square{};
};

struct Geometry {
    // Squares that a man attacks on an empty board, by side (matters to pawns), kind and square.
    std::array<std::array<std::array<Squares, 64>, 7>, 2> attacks{};
    // Squares strictly between two squares on one line; empty for squares on no common line.
    std::array<std::array<Squares, 64>, 64> between{};
    // The moves of kings and knights are eight rays of length 0 or 1.
    std::array<std::array<std::array<Ray, 8>, 64>, 7> rays{};
    std::array<int, 7> ray_count{};
};

extern const Geometry geometry;

// Whether the man standing on `from` attacks `to` when the squares in `occupied` are taken.
inline bool attacks(Side side, Kind kind, int from, int to, Squares occupied) {
    const auto f = static_cast<std::size_t>(from);
    const auto t = static_cast<std::size_t>(to);
    return (geometry.attacks[side][kind][f] & bit(to)) != 0 &&
           (geometry.between[f][t] & occupied) == 0;
}

} // namespace brindlemoth::tablegen
