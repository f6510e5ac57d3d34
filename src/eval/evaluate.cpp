#include "eval/evaluate.h"

#include "board/keys.h"
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

int tempo_of(const Position& position) {
    return position.side == WHITE ? TEMPO : -TEMPO;
}

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

// Which man stands on each square, so that equal placements are equal boards.
struct Placement {
    Bitboard not_white; // an empty slot, all zeros, stands for no board
    Bitboard types[3];  // the bits of the type, counted from 1
    bool operator==(const Placement&) const = default;
};

Placement placement_of(const Position& position) {
    Bitboard men[KING + 1];
    for (int type = PAWN; type <= KING; ++type)
        men[type] = position.pieces[WHITE][type] | position.pieces[BLACK][type];
    return {~position.occupied[WHITE],
            {men[PAWN] | men[BISHOP] | men[QUEEN], men[KNIGHT] | men[BISHOP] | men[KING],
             men[ROOK] | men[QUEEN] | men[KING]}};
}

// What tapers, in centipawns, White minus Black, where nothing but the tempo comes to it: both
// kings are there and no ending is known, so that it is the same for either side to move. Found by
// the key without the side, it serves again after a null move. The whole placement is compared,
// since boards can be made up whose keys are equal. It says nothing of Style, but where the sum of
// the squares is the same, Style makes no difference.
struct Balance {
    Placement placement;
    Score psq;
    int value;
};

// Four times as many slots would answer 22% of all calls instead of 19%, but they take more of the
// processor's cache from everything else than that saves.
constexpr int BALANCE_CACHE_SIZE = 1 << 11;

// Direct-mapped by the low bits of the key and never cleared.
Balance balance_cache[BALANCE_CACHE_SIZE];

// From White's point of view. Fills the slot if it can be of use again.
int evaluate_anew(const Position& position, Balance& slot) {
    if (position.pieces[WHITE][KING] == 0 || position.pieces[BLACK][KING] == 0)
        return 0;
    const Score sum = sum_of_terms(position);
    const int phase = game_phase(position);
    const int balance =
        (mg_value(sum) * phase + eg_value(sum) * (MAX_GAME_PHASE - phase)) / MAX_GAME_PHASE;
    int value = balance + tempo_of(position);
    if (!is_known_ending(position, phase)) {
        slot = {placement_of(position), position.psq, balance};
        return value;
    }
    if (dead_material(position))
        return 0;
    value += endgame_bonus(position);
    const int scale = endgame_scale(position, value);
    return scale == FULL_SCALE ? value : value * scale / FULL_SCALE;
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
    const Key key = position.side == WHITE ? position.key : position.key ^ side_key;
    Balance& slot = balance_cache[key & (BALANCE_CACHE_SIZE - 1)];
    const bool kept = slot.psq == position.psq && slot.placement == placement_of(position);
    const int value = kept ? slot.value + tempo_of(position) : evaluate_anew(position, slot);
    return position.side == WHITE ? value : -value;
}

} // namespace brindlemoth
