#include "eval/evaluate.h"

#include "eval/endgame.h"
#include "eval/geometry.h"
#include "eval/king_safety.h"
#include "eval/passed_pawns.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"

#include <algorithm>

namespace brindlemoth {

namespace {

constexpr int TEMPO = 20;

// Drawn whatever the placement: neither side can force mate.
bool dead_material(const Position& position) {
    const Bitboard* const white = position.pieces[WHITE];
    const Bitboard* const black = position.pieces[BLACK];
    if ((white[PAWN] | white[ROOK] | white[QUEEN] | black[PAWN] | black[ROOK] | black[QUEEN]) != 0)
        return false;
    const int white_minors = popcount(white[KNIGHT] | white[BISHOP]);
    const int black_minors = popcount(black[KNIGHT] | black[BISHOP]);
    if (white_minors + black_minors <= 1)
        return true;
    if (white_minors + black_minors != 2)
        return false;
    const Bitboard knights = white[KNIGHT] | black[KNIGHT];
    const Bitboard bishops = white[BISHOP] | black[BISHOP];
    if (white_minors != black_minors)
        return bishops == 0; // two knights against a bare king
    const bool one_colour = (bishops & EVEN_SQUARES) == 0 || (bishops & ~EVEN_SQUARES) == 0;
    return knights == 0 && one_colour;
}

// What tapers of one colour, beside placement and pawn structure. Its attack on the enemy king is
// its own gain. Needs the pawns surveyed.
template <int us> Score rate_side(const Position& position, Survey& survey) {
    survey_pieces<us>(position, survey);
    Score score = survey.mobility[us];
    score += outposts<us>(position, survey);
    score += rooks<us>(position, survey);
    score += threats<us>(position, survey);
    score += make_score(king_danger<us ^ 1>(position, survey), 0);
    score += make_score(0, passed_extras<us>(position, survey));
    if (more_than_one(position.pieces[us][BISHOP]))
        score += BISHOP_PAIR;
    return score;
}

// Everything that tapers, White minus Black.
Score sum_of_terms(const Position& position) {
    Survey survey;
    survey_pawns<WHITE>(position, survey);
    survey_pawns<BLACK>(position, survey);
    Score sum = position.psq + evaluate_pawns(position);
    sum += rate_side<WHITE>(position, survey);
    sum -= rate_side<BLACK>(position, survey);
    return sum;
}

} // namespace

int game_phase(const Position& position) {
    const Bitboard* const white = position.pieces[WHITE];
    const Bitboard* const black = position.pieces[BLACK];
    const int phase = popcount(white[KNIGHT] | white[BISHOP] | black[KNIGHT] | black[BISHOP]) +
                      2 * popcount(white[ROOK] | black[ROOK]) +
                      4 * popcount(white[QUEEN] | black[QUEEN]);
    return std::min(phase, MAX_GAME_PHASE);
}

int evaluate(const Position& position) {
    if (position.pieces[WHITE][KING] == 0 || position.pieces[BLACK][KING] == 0)
        return 0;
    const Score sum = sum_of_terms(position);
    const int phase = game_phase(position);
    const bool ending = is_known_ending(position, phase);
    if (ending && dead_material(position))
        return 0;
    int value = (mg_value(sum) * phase + eg_value(sum) * (MAX_GAME_PHASE - phase)) / MAX_GAME_PHASE;
    value += position.side == WHITE ? TEMPO : -TEMPO;
    if (ending) {
        value += endgame_bonus(position);
        if (const int scale = endgame_scale(position, value); scale != FULL_SCALE)
            value = value * scale / FULL_SCALE;
    }
    return position.side == WHITE ? value : -value;
}

} // namespace brindlemoth
