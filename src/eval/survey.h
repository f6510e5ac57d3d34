// What several terms ask of the board: what the pawns attack, then one walk over the pieces of
// each colour. This and the terms are inline, so that evaluate() becomes one function that looks
// every attack set up once.
#pragma once

#include "board/attacks.h"
#include "board/position.h"
#include "eval/geometry.h"

namespace brindlemoth {

// All members are by colour.
struct Survey {
    Bitboard pawn_reach[2]; // squares that its pawns attack
    Bitboard pawn_front[2]; // the squares of its pawns and all in front of them on their files
    Bitboard pawn_span[2];  // squares that its pawns attack, or could after advancing
    Bitboard pawn_files[2]; // its files with pawns, by their squares on rank 1

    // Squares that its pieces attack, the own ones on them included.
    Bitboard knight_reach[2];
    Bitboard bishop_reach[2];
    Bitboard rook_reach[2];
    Bitboard first_queen_reach[2]; // of the queen on the lowest square alone

    Score mobility[2];
    unsigned king_zone_units[2]; // the weight of its pieces that bear on the enemy king's zone
};

// The whole of it, for whoever wants single terms.
Survey survey_board(const Position& position);

// Mobility by the number of squares reached in the mobility area. No piece reaches more squares
// than its table has entries for.
inline constexpr Score KNIGHT_MOBILITY[9] = {S(-62, -79), S(-53, -57), S(-12, -31),
                                             S(-3, -17),  S(3, 7),     S(12, 13),
                                             S(21, 16),   S(28, 21),   S(37, 25)};
inline constexpr Score BISHOP_MOBILITY[14] = {
    S(-47, -59), S(-20, -25), S(14, -8), S(29, 12), S(39, 21), S(53, 40), S(53, 56),
    S(60, 58),   S(62, 65),   S(69, 72), S(78, 78), S(83, 87), S(91, 88), S(96, 98)};
inline constexpr Score ROOK_MOBILITY[15] = {S(-60, -82), S(-24, -15), S(0, 17),   S(3, 43),
                                            S(4, 72),    S(14, 100),  S(20, 102), S(30, 122),
                                            S(41, 133),  S(41, 139),  S(41, 153), S(45, 160),
                                            S(57, 165),  S(58, 170),  S(67, 175)};
inline constexpr Score QUEEN_MOBILITY[28] = {
    S(-29, -18), S(-16, -5), S(-8, 8), S(-8, 13), S(-7, 16), S(-7, 23), S(-4, 20),
    S(0, 21),    S(2, 21),   S(4, 28), S(6, 25),  S(6, 28),  S(7, 25),  S(7, 28),
    S(7, 28),    S(7, 28),   S(7, 28), S(7, 28),  S(7, 28),  S(7, 28),  S(7, 28),
    S(7, 28),    S(7, 28),   S(7, 28), S(7, 28),  S(7, 28),  S(7, 28),  S(7, 28)};

// What a piece that bears on the enemy king's zone weighs.
inline constexpr unsigned MINOR_ZONE_UNITS = 2;
inline constexpr unsigned ROOK_ZONE_UNITS = 3;
inline constexpr unsigned QUEEN_ZONE_UNITS = 5;

template <int us> inline void survey_pawns(const Position& position, Survey& survey) {
    const Bitboard pawns = position.pieces[us][PAWN];
    const Bitboard front = fill_forward<us>(pawns);
    survey.pawn_reach[us] = pawn_attack_set(pawns, us);
    survey.pawn_front[us] = front;
    survey.pawn_span[us] = pawn_attack_set(front, us);
    survey.pawn_files[us] = us == WHITE ? front >> 56 : front & RANK_1;
}

// Needs the pawn sets of both colours.
template <int us> inline void survey_pieces(const Position& position, Survey& survey) {
    constexpr int them = us ^ 1;
    const Bitboard* const own = position.pieces[us];
    const Bitboard occupancy = position.all_pieces;
    const Bitboard area = ~(own[KING] | own[PAWN] | survey.pawn_reach[them]);
    const Bitboard zone = king_attacks[king_square(position, them)];

    Score mobility{};
    unsigned units = 0;
    const auto count = [&](Bitboard reach, const Score* values, unsigned zone_units) {
        mobility += values[popcount(reach & area)];
        if ((reach & zone) != 0)
            units += zone_units;
        return reach;
    };

    Bitboard knight_reach = 0;
    for (Bitboard knights = own[KNIGHT]; knights != 0;) {
        const Bitboard reach = knight_attacks[pop_lowest(knights)];
        knight_reach |= count(reach, KNIGHT_MOBILITY, MINOR_ZONE_UNITS);
    }
    Bitboard bishop_reach = 0;
    for (Bitboard bishops = own[BISHOP]; bishops != 0;) {
        const Bitboard reach = bishop_attacks(pop_lowest(bishops), occupancy);
        bishop_reach |= count(reach, BISHOP_MOBILITY, MINOR_ZONE_UNITS);
    }
    Bitboard rook_reach = 0;
    for (Bitboard rooks = own[ROOK]; rooks != 0;) {
        const Bitboard reach = rook_attacks(pop_lowest(rooks), occupancy);
        rook_reach |= count(reach, ROOK_MOBILITY, ROOK_ZONE_UNITS);
    }
    Bitboard first_queen_reach = 0;
    for (Bitboard queens = own[QUEEN]; queens != 0;) {
        const Bitboard reach = queen_attacks(pop_lowest(queens), occupancy);
        count(reach, QUEEN_MOBILITY, QUEEN_ZONE_UNITS);
        if (first_queen_reach == 0) // every queen reaches something
            first_queen_reach = reach;
    }

    survey.knight_reach[us] = knight_reach;
    survey.bishop_reach[us] = bishop_reach;
    survey.rook_reach[us] = rook_reach;
    survey.first_queen_reach[us] = first_queen_reach;
    survey.mobility[us] = mobility;
    survey.king_zone_units[us] = units;
}

} // namespace brindlemoth
