#include "eval/piece_terms.h"

#include "eval/geometry.h"

namespace brindlemoth {

namespace {

constexpr Bitboard EDGE_FILES = FILE_A | FILE_H;

// By: inside the board or on an edge file, then not defended or defended by an own pawn.
constexpr Score KNIGHT_OUTPOST[2][2] = {{S(15, 8), S(30, 18)}, {S(10, 5), S(20, 12)}};
constexpr Score BISHOP_OUTPOST[2][2] = {{S(10, 5), S(20, 12)}, {S(6, 3), S(14, 8)}};
constexpr Score BISHOP_BLOCKED_PAWN = S(-4, -6);

constexpr Score ROOK_OPEN_FILE = S(47, 26);
constexpr Score ROOK_HALF_OPEN_FILE = S(20, 13);
constexpr Score ROOK_ON_SEVENTH = S(27, 33);

constexpr Score PAWN_ATTACKS_MINOR = S(55, 30);
constexpr Score PAWN_ATTACKS_ROOK = S(60, 15);

Score rate_outposts(Bitboard pieces, const Score (&value)[2][2], Bitboard defended) {
    Score score{};
    for (; pieces != 0; pieces &= pieces - 1) {
        const Bitboard piece = pieces & (~pieces + 1);
        score += value[(piece & EDGE_FILES) != 0][(piece & defended) != 0];
    }
    return score;
}

} // namespace

template <int us> Score outposts(const Position& position, const Survey& survey) {
    constexpr int them = us ^ 1;
    constexpr Bitboard ranks = us == WHITE ? rank_mask(3) | rank_mask(4) | rank_mask(5)
                                           : rank_mask(4) | rank_mask(3) | rank_mask(2);
    const Bitboard* const own = position.pieces[us];
    const Bitboard safe = ranks & ~survey.pawn_span[them];
    const Bitboard defended = survey.pawn_reach[us];

    Score score = rate_outposts(own[KNIGHT] & safe, KNIGHT_OUTPOST, defended) +
                  rate_outposts(own[BISHOP] & safe, BISHOP_OUTPOST, defended);

    // Each bishop counts the blocked pawns on the squares that it never reaches.
    const Bitboard blocked = own[PAWN] & push_squares<them>(position.pieces[them][PAWN]);
    const int unreached = popcount(own[BISHOP] & EVEN_SQUARES) * popcount(blocked & ~EVEN_SQUARES) +
                          popcount(own[BISHOP] & ~EVEN_SQUARES) * popcount(blocked & EVEN_SQUARES);
    return score + BISHOP_BLOCKED_PAWN * unreached;
}

template <int us> Score rooks(const Position& position, const Survey& survey) {
    constexpr int them = us ^ 1;
    constexpr Bitboard seventh = rank_mask(us == WHITE ? 6 : 1);
    constexpr Bitboard eighth = rank_mask(us == WHITE ? 7 : 0);
    const Bitboard own_rooks = position.pieces[us][ROOK];

    const Bitboard off_own_files = own_rooks & ~survey.pawn_files[us];
    Score score = ROOK_OPEN_FILE * popcount(off_own_files & ~survey.pawn_files[them]) +
                  ROOK_HALF_OPEN_FILE * popcount(off_own_files & survey.pawn_files[them]);

    if ((own_rooks & seventh) != 0) {
        const Bitboard kings = position.pieces[them][KING];
        const Bitboard king = kings & (~kings + 1); // the one on the lowest square
        if ((king & eighth) != 0 || (position.pieces[them][PAWN] & seventh) != 0)
            score += ROOK_ON_SEVENTH * popcount(own_rooks & seventh);
    }
    return score;
}

template <int us> Score threats(const Position& position, const Survey& survey) {
    const Bitboard* const enemy = position.pieces[us ^ 1];
    Score score = survey.minor_threats[us];
    if ((survey.pawn_reach[us] & (enemy[KNIGHT] | enemy[BISHOP])) != 0)
        score += PAWN_ATTACKS_MINOR;
    if ((survey.pawn_reach[us] & enemy[ROOK]) != 0)
        score += PAWN_ATTACKS_ROOK;
    return score;
}

template Score outposts<WHITE>(const Position& position, const Survey& survey);
template Score outposts<BLACK>(const Position& position, const Survey& survey);
template Score rooks<WHITE>(const Position& position, const Survey& survey);
template Score rooks<BLACK>(const Position& position, const Survey& survey);
template Score threats<WHITE>(const Position& position, const Survey& survey);
template Score threats<BLACK>(const Position& position, const Survey& survey);

Score evaluate_mobility(const Position& position, int colour) {
    return survey_board(position).mobility[colour];
}

Score evaluate_outposts(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? outposts<WHITE>(position, survey) : outposts<BLACK>(position, survey);
}

Score evaluate_rooks(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? rooks<WHITE>(position, survey) : rooks<BLACK>(position, survey);
}

Score evaluate_threats(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? threats<WHITE>(position, survey) : threats<BLACK>(position, survey);
}

} // namespace brindlemoth
