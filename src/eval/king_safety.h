// How exposed a king is, as a plain number of centipawns for the middle game.
// evaluate() passes the survey that it has taken; the trace asks without one.
#pragma once

#include "eval/survey.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace brindlemoth {

// The danger to that colour's king, from 0, safe, to 920. 0 when the colour has no king.
int king_danger(const Position& position, int colour);

inline constexpr unsigned MAX_UNITS = 99;

// Attack units to danger: a slow start, then ten for each unit. More units than the table has are
// worth no more than its end.
inline constexpr std::array<int, MAX_UNITS + 1> DANGER = [] {
    std::array<int, MAX_UNITS + 1> table = {0,  0,  1,  2,  3,  5,  7,  10, 13, 16, 20, 24,
                                            28, 33, 38, 44, 50, 56, 62, 68, 75, 83, 91, 100};
    for (std::size_t units = 24; units < table.size(); ++units) {
        table[units] = table[units - 1] + 10;
    }
    return table;
}();
static_assert(DANGER[24] == 110 && DANGER[99] == 860);

// Weights of a safe check, each paid at most once.
inline constexpr unsigned QUEEN_CHECK_UNITS = 6;
inline constexpr unsigned ROOK_CHECK_UNITS = 3;
inline constexpr unsigned MINOR_CHECK_UNITS = 2;

// For each file at the king without a pawn of the defender, and once more if the attacker has
// none there either.
inline constexpr int OPEN_FILE_DANGER = 10;

// The files at the king by its square, each file by its square on rank 1.
inline constexpr std::array<std::uint8_t, SQUARE_COUNT> FILES_AT_KING = [] {
    std::array<std::uint8_t, SQUARE_COUNT> table{};
    for (std::size_t square = 0; square < table.size(); ++square) {
        const int file = file_of(static_cast<int>(square));
        const Bitboard files = file_mask(file) | adjacent_files_mask(file);
        table[square] = static_cast<std::uint8_t>(files & RANK_1);
    }
    return table;
}();

// Needs the attacker's pieces surveyed. Meaningless for a colour without a king.
template <int colour> inline int king_danger(const Position& position, const Survey& survey) {
    constexpr int attacker = colour ^ 1;
    const int king = king_square(position, colour);

    unsigned units = survey.king_zone_units[attacker];

    // A defender's piece does not make a square unsafe: the checker would capture there.
    const Bitboard safe = ~(survey.pawn_reach[colour] | position.occupied[attacker]);
    const Bitboard bishop_checks = bishop_attacks(king, position.all_pieces) & safe;
    const Bitboard rook_checks = rook_attacks(king, position.all_pieces) & safe;
    const Bitboard knight_checks = knight_attacks[king] & safe;
    if ((survey.first_queen_reach[attacker] & (bishop_checks | rook_checks)) != 0)
        units += QUEEN_CHECK_UNITS;
    if ((survey.rook_reach[attacker] & rook_checks) != 0)
        units += ROOK_CHECK_UNITS;
    if ((survey.bishop_reach[attacker] & bishop_checks) != 0)
        units += MINOR_CHECK_UNITS;
    if ((survey.knight_reach[attacker] & knight_checks) != 0)
        units += MINOR_CHECK_UNITS;

    const Bitboard bare_files =
        FILES_AT_KING[static_cast<std::size_t>(king)] & ~survey.pawn_files[colour];
    const Bitboard open_files = bare_files & ~survey.pawn_files[attacker];
    return DANGER[std::min(units, MAX_UNITS)] +
           OPEN_FILE_DANGER * (popcount(bare_files) + popcount(open_files));
}

} // namespace brindlemoth
