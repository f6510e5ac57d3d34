// Attack information: what several evaluation terms need to know about the pawns and the attacks
// of both colours, collected once for an evaluation. Also rates mobility, which falls out of it.
// Inline, as the terms are, so that evaluate() becomes one function.
#pragma once

#include "board/attacks.h"
#include "board/position.h"
#include "eval/geometry.h"

namespace brindlemoth {

// All members are by colour.
struct PawnInfo {
    Bitboard attacks[2];
    Bitboard front_fill[2];  // the pawns and all squares in front of them on their files
    Bitboard attack_span[2]; // squares that the pawns attack, or could after advancing
    Bitboard files[2];       // files with pawns, each as its square on rank 1
};

// Of the pieces of one colour.
struct PieceInfo {
    // Attacked squares, including those that own pieces occupy.
    Bitboard knight_attacks = 0;
    Bitboard bishop_attacks = 0;
    Bitboard rook_attacks = 0;
    Bitboard first_queen_attacks = 0; // of the queen on the lowest square only

    Score mobility{};
    unsigned attack_units = 0; // weights of the pieces that attack a square next to the enemy king
};

// Mobility by the number of attacked squares in the mobility area: no own king or pawn, not
// attacked by an enemy pawn. Each table has an entry for every number that its piece can attack.
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

// Attack units of a piece that attacks a square next to the enemy king.
inline constexpr unsigned MINOR_ATTACK_UNITS = 2;
inline constexpr unsigned ROOK_ATTACK_UNITS = 3;
inline constexpr unsigned QUEEN_ATTACK_UNITS = 5;

template <int us> inline void collect_pawns_of(const Position& position, PawnInfo& info) {
    const Bitboard pawns = position.pieces[us][PAWN];
    const Bitboard front = front_fill<us>(pawns);
    info.attacks[us] = pawn_attack_set(pawns, us);
    info.front_fill[us] = front;
    info.attack_span[us] = pawn_attack_set(front, us);
    info.files[us] = us == WHITE ? front >> 56 : front & RANK_1;
}

inline PawnInfo collect_pawns(const Position& position) {
    PawnInfo info;
    collect_pawns_of<WHITE>(position, info);
    collect_pawns_of<BLACK>(position, info);
    return info;
}

template <int us> inline PieceInfo collect_pieces(const Position& position, const PawnInfo& pawns) {
    constexpr int them = us ^ 1;
    const Bitboard* const own = position.pieces[us];
    const Bitboard occupancy = position.all_pieces;
    const Bitboard mobility_area = ~(own[KING] | own[PAWN] | pawns.attacks[them]);
    const Bitboard king_zone = king_attacks[king_square(position, them)];

    PieceInfo info;
    const auto rate = [&](Bitboard attacks, const Score* mobility, unsigned attack_units) {
        info.mobility += mobility[popcount(attacks & mobility_area)];
        if ((attacks & king_zone) != 0)
            info.attack_units += attack_units;
        return attacks;
    };
    for (Bitboard rest = own[KNIGHT]; rest != 0;)
        info.knight_attacks |=
            rate(knight_attacks[pop_lowest(rest)], KNIGHT_MOBILITY, MINOR_ATTACK_UNITS);
    for (Bitboard rest = own[BISHOP]; rest != 0;)
        info.bishop_attacks |=
            rate(bishop_attacks(pop_lowest(rest), occupancy), BISHOP_MOBILITY, MINOR_ATTACK_UNITS);
    for (Bitboard rest = own[ROOK]; rest != 0;)
        info.rook_attacks |=
            rate(rook_attacks(pop_lowest(rest), occupancy), ROOK_MOBILITY, ROOK_ATTACK_UNITS);
    for (Bitboard rest = own[QUEEN]; rest != 0;) {
        const Bitboard attacks =
            rate(queen_attacks(pop_lowest(rest), occupancy), QUEEN_MOBILITY, QUEEN_ATTACK_UNITS);
        if (info.first_queen_attacks == 0) // every queen attacks a square
            info.first_queen_attacks = attacks;
    }
    return info;
}

} // namespace brindlemoth
