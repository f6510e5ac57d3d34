#include "eval/pawns.h"

#include "eval/geometry.h"

namespace brindlemoth {

PawnEntry pawn_cache[PAWN_CACHE_SIZE];

namespace {

constexpr Score DOUBLED = S(-5, -12);
constexpr Score ISOLATED = S(-11, -15);
constexpr Score CONNECTED = S(5, 8);
constexpr Score BACKWARD = S(-10, -12);

// By relative rank, the pawn's own first rank being 0.
constexpr Score PASSED[8] = {S(0, 0),   S(5, 18),   S(12, 23),   S(24, 31),
                             S(46, 54), S(97, 111), S(173, 182), S(0, 0)};
constexpr Score CANDIDATE[8] = {S(0, 0),   S(3, 8),   S(5, 10), S(10, 15),
                                S(20, 28), S(40, 55), S(0, 0),  S(0, 0)};

template <int colour> Score rate_pawns(const Bitboard own, const Bitboard enemy) {
    const Bitboard enemy_attacks = pawn_attack_set(enemy, colour ^ 1);
    Score score{};
    for (Bitboard rest = own; rest != 0;) {
        const int square = pop_lowest(rest);
        const int rank = relative_rank(square, colour);
        const Bitboard file = file_mask(file_of(square));
        const Bitboard adjacent = adjacent_files_mask(file_of(square));
        const Bitboard front = ranks_in_front<colour>(square);
        const Bitboard behind = ranks_in_front<colour ^ 1>(square);
        const Bitboard stop = push_squares<colour>(square_bit(square));
        const Bitboard rank_and_behind =
            rank_mask(rank_of(square)) | push_squares<colour ^ 1>(rank_mask(rank_of(square)));

        if (more_than_one(own & file))
            score += DOUBLED;
        if ((own & adjacent) == 0)
            score += ISOLATED;
        if ((own & adjacent & rank_and_behind) != 0)
            score += CONNECTED;
        const Bitboard supporters = own & adjacent & behind;
        const Bitboard sentries = enemy & adjacent & front;
        if ((enemy & file & front) == 0) {
            if (sentries == 0)
                score += PASSED[rank];
            else if (popcount(supporters) >= popcount(sentries))
                score += CANDIDATE[rank];
        }
        if (supporters == 0 && (enemy_attacks & stop) != 0)
            score += BACKWARD;
    }
    return score;
}

} // namespace

Score evaluate_pawns(const Position& position) {
    PawnEntry& entry = pawn_cache[position.pawn_key & (PAWN_CACHE_SIZE - 1)];
    if (entry.key != position.pawn_key) {
        const Bitboard white = position.pieces[WHITE][PAWN];
        const Bitboard black = position.pieces[BLACK][PAWN];
        entry.key = position.pawn_key;
        entry.score = rate_pawns<WHITE>(white, black) - rate_pawns<BLACK>(black, white);
    }
    return entry.score;
}

} // namespace brindlemoth
