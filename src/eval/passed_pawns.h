// The part of a passed pawn's value that depends on kings and pieces, as a plain number of
// centipawns for the end game. Its value by rank belongs to the cached pawn structure.
#pragma once

#include "eval/attack_info.h"

namespace brindlemoth {

// Per square of distance between a king and the pawn, multiplied by the pawn's relative rank and
// divided by KING_DISTANCE_DIVISOR.
inline constexpr int ENEMY_KING_DISTANCE = 8;
inline constexpr int OWN_KING_DISTANCE = -5;
inline constexpr int KING_DISTANCE_DIVISOR = 6;

// For a rook or queen behind the pawn on its file, multiplied by the pawn's relative rank.
inline constexpr int OWN_HEAVY_BEHIND = 3;
inline constexpr int ENEMY_HEAVY_BEHIND = -5;

inline constexpr int UNSTOPPABLE = 600; // a bare enemy king cannot catch the pawn

// The sum over the colour's passed pawns. Both sides must have a king.
template <int us>
inline int evaluate_passed_pawns(const Position& position, const PawnInfo& pawns) {
    constexpr int them = us ^ 1;
    const Bitboard* const own = position.pieces[us];
    const Bitboard* const enemy = position.pieces[them];

    Bitboard passed = own[PAWN] & ~(pawns.attack_span[them] | pawns.front_fill[them]);
    if (passed == 0)
        return 0;
    const int own_king = king_square(position, us);
    const int enemy_king = king_square(position, them);
    const bool enemy_is_bare = position.occupied[them] == enemy[KING];

    int value = 0;
    while (passed != 0) {
        const int pawn = pop_lowest(passed);
        const int rank = relative_rank(pawn, us);
        value += (ENEMY_KING_DISTANCE * distance(enemy_king, pawn) +
                  OWN_KING_DISTANCE * distance(own_king, pawn)) *
                 rank / KING_DISTANCE_DIVISOR;

        const Bitboard behind = file_mask(file_of(pawn)) & ranks_in_front<them>(pawn);
        if ((behind & (own[ROOK] | own[QUEEN])) != 0)
            value += OWN_HEAVY_BEHIND * rank;
        if ((behind & (enemy[ROOK] | enemy[QUEEN])) != 0)
            value += ENEMY_HEAVY_BEHIND * rank;

        if (enemy_is_bare) {
            const int promotion_square = make_square(file_of(pawn), us == WHITE ? 7 : 0);
            const int double_push = rank == 1 ? 1 : 0;
            const int tempo = position.side == them ? 1 : 0;
            if (distance(enemy_king, promotion_square) - tempo > 7 - rank - double_push)
                value += UNSTOPPABLE;
        }
    }
    return value;
}

} // namespace brindlemoth
