// How exposed a king is, as a plain number of centipawns for the middle game. Attacks on the king
// count attack units, and a table turns the units into the danger.
#pragma once

#include "eval/attack_info.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace brindlemoth {

inline constexpr unsigned MAX_ATTACK_UNITS = 99; // more units are rated as these

// By attack units: a slow start, then ten for each unit.
inline constexpr std::array<int, MAX_ATTACK_UNITS + 1> DANGER = [] {
    std::array<int, MAX_ATTACK_UNITS + 1> table = {0,  0,  1,  2,  3,  5,  7,  10, 13, 16, 20, 24,
                                                   28, 33, 38, 44, 50, 56, 62, 68, 75, 83, 91, 100};
    for (std::size_t units = 24; units < table.size(); ++units)
        table[units] = table[units - 1] + 10;
    return table;
}();
static_assert(DANGER[24] == 110 && DANGER[99] == 860);

// Attack units of a safe check. Each is counted at most once.
inline constexpr unsigned QUEEN_CHECK_UNITS = 6;
inline constexpr unsigned ROOK_CHECK_UNITS = 3;
inline constexpr unsigned MINOR_CHECK_UNITS = 2;

// For the king's file and each file beside it without a pawn of the defender, and once more if the
// attacker has none there either.
inline constexpr int OPEN_FILE_DANGER = 10;

// The king's file and those beside it, by its square, each as its square on rank 1.
inline constexpr std::array<std::uint8_t, SQUARE_COUNT> KING_FILES = [] {
    std::array<std::uint8_t, SQUARE_COUNT> table{};
    for (std::size_t square = 0; square < table.size(); ++square) {
        const Bitboard king_file = square_bit(file_of(static_cast<int>(square)));
        table[square] = static_cast<std::uint8_t>(king_file | beside_squares(king_file));
    }
    return table;
}();

// The danger to that colour's king, from 0, safe, to 920, with the pieces of the other colour.
// Meaningless for a colour without a king.
template <int colour>
inline int king_danger(const Position& position, const PawnInfo& pawns,
                       const PieceInfo& attackers) {
    constexpr int attacker = colour ^ 1;
    const int king = king_square(position, colour);
    unsigned units = attackers.attack_units;

    // A defender's piece does not make a square unsafe: the checker would capture there.
    const Bitboard safe = ~(pawns.attacks[colour] | position.occupied[attacker]);
    const Bitboard bishop_checks = bishop_attacks(king, position.all_pieces) & safe;
    const Bitboard rook_checks = rook_attacks(king, position.all_pieces) & safe;
    const Bitboard knight_checks = knight_attacks[king] & safe;
    if ((attackers.first_queen_attacks & (bishop_checks | rook_checks)) != 0)
        units += QUEEN_CHECK_UNITS;
    if ((attackers.rook_attacks & rook_checks) != 0)
        units += ROOK_CHECK_UNITS;
    if ((attackers.bishop_attacks & bishop_checks) != 0)
        units += MINOR_CHECK_UNITS;
    if ((attackers.knight_attacks & knight_checks) != 0)
        units += MINOR_CHECK_UNITS;

    const Bitboard half_open_files =
        KING_FILES[static_cast<std::size_t>(king)] & ~pawns.files[colour];
    const Bitboard open_files = half_open_files & ~pawns.files[attacker];
    return DANGER[std::min(units, MAX_ATTACK_UNITS)] +
           OPEN_FILE_DANGER * (popcount(half_open_files) + popcount(open_files));
}

} // namespace brindlemoth
