// Terms that rate the knights, bishops, rooks and queens of one colour. Each is good for that
// colour: the caller subtracts Black's from White's. None depends on the side to move or style.
// evaluate() passes the survey that it has taken; the trace asks for single terms without one.
#pragma once

#include "eval/survey.h"

namespace brindlemoth {

// How many squares each piece reaches that no enemy pawn attacks and no own king or pawn holds.
Score evaluate_mobility(const Position& position, int colour);

// Knights and bishops where no enemy pawn can ever attack them, and the own blocked pawns that
// each bishop cannot defend.
Score evaluate_outposts(const Position& position, int colour);

// Rooks on files without own pawns, and on the seventh rank.
Score evaluate_rooks(const Position& position, int colour);

// Minor pieces attacking rooks and queens, pawns attacking minor pieces and rooks.
Score evaluate_threats(const Position& position, int colour);

inline constexpr Score BISHOP_PAIR = S(22, 30); // once, for two or more bishops on whatever squares

inline constexpr Bitboard EDGE_FILES = FILE_A | FILE_H;

// By: knight or bishop, inside the board or on an edge file, not defended or defended by a pawn.
inline constexpr Score OUTPOST[2][2][2] = {
    {{S(15, 8), S(30, 18)}, {S(10, 5), S(20, 12)}},
    {{S(10, 5), S(20, 12)}, {S(6, 3), S(14, 8)}},
};
inline constexpr Score BISHOP_BLOCKED_PAWN = S(-4, -6);

inline constexpr Score ROOK_OPEN_FILE = S(47, 26);
inline constexpr Score ROOK_HALF_OPEN_FILE = S(20, 13);
inline constexpr Score ROOK_ON_SEVENTH = S(27, 33);

inline constexpr Score MINOR_ATTACKS_ROOK = S(45, 20);
inline constexpr Score MINOR_ATTACKS_QUEEN = S(50, 25);
inline constexpr Score PAWN_ATTACKS_MINOR = S(55, 30);
inline constexpr Score PAWN_ATTACKS_ROOK = S(60, 15);

template <int us> inline Score outposts(const Position& position, const Survey& survey) {
    constexpr int them = us ^ 1;
    constexpr Bitboard ranks = us == WHITE ? rank_mask(3) | rank_mask(4) | rank_mask(5)
                                           : rank_mask(4) | rank_mask(3) | rank_mask(2);
    const Bitboard* const own = position.pieces[us];
    const Bitboard safe = ranks & ~survey.pawn_span[them];

    Score score{};
    for (Bitboard rest = (own[KNIGHT] | own[BISHOP]) & safe; rest != 0;) {
        const Bitboard piece = square_bit(pop_lowest(rest));
        score += OUTPOST[(piece & own[BISHOP]) != 0][(piece & EDGE_FILES) != 0]
                        [(piece & survey.pawn_reach[us]) != 0];
    }

    // Each bishop counts the blocked pawns on the squares that it never reaches.
    const Bitboard blocked = own[PAWN] & push_squares<them>(position.pieces[them][PAWN]);
    if (blocked != 0)
        score += BISHOP_BLOCKED_PAWN *
                 (popcount(own[BISHOP] & EVEN_SQUARES) * popcount(blocked & ~EVEN_SQUARES) +
                  popcount(own[BISHOP] & ~EVEN_SQUARES) * popcount(blocked & EVEN_SQUARES));
    return score;
}

template <int us> inline Score rooks(const Position& position, const Survey& survey) {
    constexpr int them = us ^ 1;
    constexpr Bitboard seventh = rank_mask(us == WHITE ? 6 : 1);
    constexpr Bitboard eighth = rank_mask(us == WHITE ? 7 : 0);
    const Bitboard own_rooks = position.pieces[us][ROOK];

    Score score{};
    const Bitboard off_own_files = own_rooks & ~whole_files(survey.pawn_files[us]);
    if (off_own_files != 0) {
        const Bitboard enemy_files = whole_files(survey.pawn_files[them]);
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

template <int us> inline Score threats(const Position& position, const Survey& survey) {
    const Bitboard* const own = position.pieces[us];
    const Bitboard* const enemy = position.pieces[us ^ 1];
    Score score{};

    // Most often no minor piece attacks any of these; which ones do is looked up anew.
    const Bitboard minor_reach = survey.knight_reach[us] | survey.bishop_reach[us];
    if ((minor_reach & (enemy[ROOK] | enemy[QUEEN])) != 0) {
        const auto add = [&](Bitboard reach) {
            if ((reach & enemy[ROOK]) != 0)
                score += MINOR_ATTACKS_ROOK;
            if ((reach & enemy[QUEEN]) != 0)
                score += MINOR_ATTACKS_QUEEN;
        };
        for (Bitboard knights = own[KNIGHT]; knights != 0;)
            add(knight_attacks[pop_lowest(knights)]);
        for (Bitboard bishops = own[BISHOP]; bishops != 0;)
            add(bishop_attacks(pop_lowest(bishops), position.all_pieces));
    }

    if ((survey.pawn_reach[us] & (enemy[KNIGHT] | enemy[BISHOP])) != 0)
        score += PAWN_ATTACKS_MINOR;
    if ((survey.pawn_reach[us] & enemy[ROOK]) != 0)
        score += PAWN_ATTACKS_ROOK;
    return score;
}

} // namespace brindlemoth
