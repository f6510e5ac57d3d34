// Terms that rate the knights, bishops, rooks and queens of one colour. Each returns a value for
// that colour: the caller subtracts Black's from White's. None depends on the side to move or the
// style.
#pragma once

#include "eval/attack_info.h"

namespace brindlemoth {

inline constexpr Score BISHOP_PAIR = S(22, 30);

// By knight or bishop, then inner or edge file, then undefended or defended by a pawn.
inline constexpr Score OUTPOST[2][2][2] = {
    {{S(15, 8), S(30, 18)}, {S(10, 5), S(20, 12)}},
    {{S(10, 5), S(20, 12)}, {S(6, 3), S(14, 8)}},
};
inline constexpr Bitboard EDGE_FILES = FILE_A | FILE_H;
inline constexpr Score BISHOP_BLOCKED_PAWN = S(-4, -6);

inline constexpr Score ROOK_OPEN_FILE = S(47, 26);
inline constexpr Score ROOK_HALF_OPEN_FILE = S(20, 13);
inline constexpr Score ROOK_ON_SEVENTH = S(27, 33);

inline constexpr Score MINOR_ATTACKS_ROOK = S(45, 20);
inline constexpr Score MINOR_ATTACKS_QUEEN = S(50, 25);
inline constexpr Score PAWN_ATTACKS_MINOR = S(55, 30);
inline constexpr Score PAWN_ATTACKS_ROOK = S(60, 15);

// Once, for two or more bishops on whatever squares.
inline Score evaluate_bishop_pair(const Position& position, int colour) {
    return more_than_one(position.pieces[colour][BISHOP]) ? BISHOP_PAIR : Score{};
}

// Knights and bishops on squares that no enemy pawn can ever attack, and for each bishop the own
// blocked pawns on the other colour of squares.
template <int us> inline Score evaluate_outposts(const Position& position, const PawnInfo& pawns) {
    constexpr int them = us ^ 1;
    constexpr Bitboard ranks = us == WHITE ? rank_mask(3) | rank_mask(4) | rank_mask(5)
                                           : rank_mask(4) | rank_mask(3) | rank_mask(2);
    const Bitboard* const own = position.pieces[us];
    const Bitboard safe = ranks & ~pawns.attack_span[them];

    Score score{};
    for (Bitboard rest = (own[KNIGHT] | own[BISHOP]) & safe; rest != 0;) {
        const Bitboard piece = square_bit(pop_lowest(rest));
        score += OUTPOST[(piece & own[BISHOP]) != 0][(piece & EDGE_FILES) != 0]
                        [(piece & pawns.attacks[us]) != 0];
    }

    const Bitboard blocked = own[PAWN] & forward_squares(position.pieces[them][PAWN], them);
    if (blocked != 0)
        score += BISHOP_BLOCKED_PAWN *
                 (popcount(own[BISHOP] & EVEN_SQUARES) * popcount(blocked & ~EVEN_SQUARES) +
                  popcount(own[BISHOP] & ~EVEN_SQUARES) * popcount(blocked & EVEN_SQUARES));
    return score;
}

// Rooks on files without own pawns, and on the seventh rank.
template <int us> inline Score evaluate_rooks(const Position& position, const PawnInfo& pawns) {
    constexpr int them = us ^ 1;
    constexpr Bitboard seventh = rank_mask(us == WHITE ? 6 : 1);
    constexpr Bitboard eighth = rank_mask(us == WHITE ? 7 : 0);
    const Bitboard own_rooks = position.pieces[us][ROOK];

    Score score{};
    const Bitboard off_own_files = own_rooks & ~whole_files(pawns.files[us]);
    if (off_own_files != 0) {
        const Bitboard enemy_files = whole_files(pawns.files[them]);
        score += ROOK_OPEN_FILE * popcount(off_own_files & ~enemy_files) +
                 ROOK_HALF_OPEN_FILE * popcount(off_own_files & enemy_files);
    }

    if ((own_rooks & seventh) != 0) {
        const Bitboard king = square_bit(king_square(position, them)) & position.pieces[them][KING];
        if ((king & eighth) != 0 || (position.pieces[them][PAWN] & seventh) != 0)
            score += ROOK_ON_SEVENTH * popcount(own_rooks & seventh);
    }
    return score;
}

// Minor pieces that attack rooks and queens, pawns that attack minor pieces and rooks.
template <int us>
inline Score evaluate_threats(const Position& position, const PawnInfo& pawns,
                              const PieceInfo& pieces) {
    const Bitboard* const own = position.pieces[us];
    const Bitboard* const enemy = position.pieces[us ^ 1];
    Score score{};

    // Usually no minor piece attacks any of these. If one does, look at each piece's attacks again.
    const Bitboard minor_attacks = pieces.knight_attacks | pieces.bishop_attacks;
    if ((minor_attacks & (enemy[ROOK] | enemy[QUEEN])) != 0) {
        const auto add = [&](Bitboard attacks) {
            if ((attacks & enemy[ROOK]) != 0)
                score += MINOR_ATTACKS_ROOK;
            if ((attacks & enemy[QUEEN]) != 0)
                score += MINOR_ATTACKS_QUEEN;
        };
        for (Bitboard knights = own[KNIGHT]; knights != 0;)
            add(knight_attacks[pop_lowest(knights)]);
        for (Bitboard bishops = own[BISHOP]; bishops != 0;)
            add(bishop_attacks(pop_lowest(bishops), position.all_pieces));
    }

    const Bitboard attacked_by_pawns = pawns.attacks[us];
    if ((attacked_by_pawns & (enemy[KNIGHT] | enemy[BISHOP])) != 0)
        score += PAWN_ATTACKS_MINOR;
    if ((attacked_by_pawns & enemy[ROOK]) != 0)
        score += PAWN_ATTACKS_ROOK;
    return score;
}

} // namespace brindlemoth
