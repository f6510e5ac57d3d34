#include "eval/pawns.h"

#include "eval/geometry.h"

namespace brindlemoth {

PawnEntry pawn_cache[PAWN_CACHE_SIZE];

namespace {

constexpr Score DOUBLED = S(-5, -12);
constexpr Score ISOLATED = S(-11, -15);
constexpr Score CONNECTED = S(5, 8);
constexpr Score BACKWARD = S(-10, -12);

// By relative rank.
constexpr Score PASSED[8] = {S(0, 0),   S(5, 18),   S(12, 23),   S(24, 31),
                             S(46, 54), S(97, 111), S(173, 182), S(0, 0)};
constexpr Score CANDIDATE[8] = {S(0, 0),   S(3, 8),   S(5, 10), S(10, 15),
                                S(20, 28), S(40, 55), S(0, 0),  S(0, 0)};

template <int colour> Score rate_pawns(const Bitboard own, const Bitboard enemy) {
    constexpr int them = colour ^ 1;
    const Bitboard ahead = front_fill<colour>(forward_squares(own, colour));
    const Bitboard behind = front_fill<them>(forward_squares(own, them));
    const Bitboard beside = beside_squares(own);
    const Bitboard enemy_attacks = pawn_attack_set(enemy, them);
    // An attack span holds the squares that pawns attack, or could after advancing. A pawn in its
    // own side's span has a supporter: an own pawn behind it on an adjacent file. A pawn in the
    // enemy's span has a sentry: an enemy pawn in front of it on an adjacent file.
    const Bitboard span = front_fill<colour>(pawn_attack_set(own, colour));
    const Bitboard enemy_span = front_fill<them>(enemy_attacks);

    const Bitboard doubled = own & (ahead | behind);
    const Bitboard isolated = own & ~beside_squares(own | ahead | behind);
    const Bitboard connected = own & (beside | forward_squares(beside, colour));
    const Bitboard backward = own & ~span & forward_squares(enemy_attacks, them);
    Score score = DOUBLED * popcount(doubled) + ISOLATED * popcount(isolated) +
                  CONNECTED * popcount(connected) + BACKWARD * popcount(backward);

    const Bitboard open = own & ~front_fill<them>(enemy);
    for (Bitboard passed = open & ~enemy_span; passed != 0;)
        score += PASSED[relative_rank(pop_lowest(passed), colour)];
    for (Bitboard contested = open & enemy_span & span; contested != 0;) {
        const int square = pop_lowest(contested);
        const Bitboard adjacent = beside_squares(file_mask(file_of(square)));
        const Bitboard supporters = own & adjacent & ranks_in_front<them>(square);
        const Bitboard sentries = enemy & adjacent & ranks_in_front<colour>(square);
        if (popcount(supporters) >= popcount(sentries))
            score += CANDIDATE[relative_rank(square, colour)];
    }
    return score;
}

} // namespace

Score compute_pawn_structure(const Position& position) {
    const Bitboard white = position.pieces[WHITE][PAWN];
    const Bitboard black = position.pieces[BLACK][PAWN];
    return rate_pawns<WHITE>(white, black) - rate_pawns<BLACK>(black, white);
}

} // namespace brindlemoth
