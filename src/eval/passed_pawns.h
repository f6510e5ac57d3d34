// What a passed pawn is worth by kings and pieces, as a plain number of centipawns for the end
// game. Its worth by rank is part of the cached pawn structure.
#pragma once

#include "eval/survey.h"

namespace brindlemoth {

inline constexpr int HEAVY_BEHIND = 3;       // own rook or queen, per relative rank
inline constexpr int ENEMY_HEAVY_BEHIND = 5; // the enemy's, likewise
inline constexpr int UNSTOPPABLE = 600;

// The sum over the colour's passed pawns. Both sides must have a king.
template <int us> inline int passed_extras(const Position& position, const Survey& survey) {
    constexpr int them = us ^ 1;
    const Bitboard* const own = position.pieces[us];
    const Bitboard* const enemy = position.pieces[them];

    Bitboard passed = own[PAWN] & ~(survey.pawn_span[them] | survey.pawn_front[them]);
    if (passed == 0)
        return 0;
    const int own_king = king_square(position, us);
    const int enemy_king = king_square(position, them);
    const bool enemy_is_bare = position.occupied[them] == enemy[KING];

    int extras = 0;
    while (passed != 0) {
        const int pawn = pop_lowest(passed);
        const int rank = relative_rank(pawn, us);
        extras += (8 * distance(enemy_king, pawn) - 5 * distance(own_king, pawn)) * rank / 6;

        const Bitboard behind = file_mask(file_of(pawn)) & ranks_in_front<them>(pawn);
        if ((behind & (own[ROOK] | own[QUEEN])) != 0)
            extras += HEAVY_BEHIND * rank;
        if ((behind & (enemy[ROOK] | enemy[QUEEN])) != 0)
            extras -= ENEMY_HEAVY_BEHIND * rank;

        if (enemy_is_bare) {
            const int promotion = make_square(file_of(pawn), us == WHITE ? 7 : 0);
            const int steps = 7 - rank - (rank == 1 ? 1 : 0);
            const int chase = distance(enemy_king, promotion) - (position.side == them ? 1 : 0);
            if (chase > steps)
                extras += UNSTOPPABLE;
        }
    }
    return extras;
}

} // namespace brindlemoth
