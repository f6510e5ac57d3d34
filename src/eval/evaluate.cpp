#include "eval/evaluate.h"

#include "eval/endgame.h"
#include "eval/geometry.h"
#include "eval/king_safety.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"

#include <algorithm>

namespace brindlemoth {

namespace {

constexpr int TEMPO = 20;

constexpr int PASSED_HEAVY_BEHIND = 3;       // own rook or queen, per relative rank
constexpr int PASSED_ENEMY_HEAVY_BEHIND = 5; // the enemy's, likewise
constexpr int PASSED_UNSTOPPABLE = 600;

// What a passed pawn is worth by kings and pieces, in the end game alone. Its worth by rank is
// part of the cached pawn structure.
template <int us> int passed_extras(const Position& position, const Survey& survey) {
    constexpr int them = us ^ 1;
    const Bitboard* const own = position.pieces[us];
    const Bitboard* const enemy = position.pieces[them];

    // An enemy pawn in front on a neighbouring file has this square in its span; one on the same
    // file, spread backwards over that file, reaches it too.
    Bitboard passed =
        own[PAWN] & ~survey.pawn_span[them] & ~fill_forward<them>(push_squares<them>(enemy[PAWN]));
    if (passed == 0)
        return 0;
    const int own_king = lowest_square(own[KING]);
    const int enemy_king = lowest_square(enemy[KING]);
    const bool enemy_is_bare = position.occupied[them] == enemy[KING];

    int extras = 0;
    while (passed != 0) {
        const int pawn = pop_lowest(passed);
        const int rank = relative_rank(pawn, us);
        extras += (8 * distance(enemy_king, pawn) - 5 * distance(own_king, pawn)) * rank / 6;

        const Bitboard behind = file_mask(file_of(pawn)) & ranks_in_front<them>(pawn);
        if ((behind & (own[ROOK] | own[QUEEN])) != 0)
            extras += PASSED_HEAVY_BEHIND * rank;
        if ((behind & (enemy[ROOK] | enemy[QUEEN])) != 0)
            extras -= PASSED_ENEMY_HEAVY_BEHIND * rank;

        if (enemy_is_bare) {
            const int promotion = make_square(file_of(pawn), us == WHITE ? 7 : 0);
            const int steps = 7 - rank - (rank == 1 ? 1 : 0);
            const int chase = distance(enemy_king, promotion) - (position.side == them ? 1 : 0);
            if (chase > steps)
                extras += PASSED_UNSTOPPABLE;
        }
    }
    return extras;
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

Score bishop_pair(const Position& position, int colour) {
    return more_than_one(position.pieces[colour][BISHOP]) ? BISHOP_PAIR : Score{};
}

// Everything that tapers, White minus Black.
Score sum_of_terms(const Position& position) {
    const Survey survey = survey_board(position);
    Score sum = position.psq + evaluate_pawns(position);
    sum += survey.mobility[WHITE] - survey.mobility[BLACK];
    sum += outposts<WHITE>(position, survey) - outposts<BLACK>(position, survey);
    sum += bishop_pair(position, WHITE) - bishop_pair(position, BLACK);
    sum += rooks<WHITE>(position, survey) - rooks<BLACK>(position, survey);
    sum += threats<WHITE>(position, survey) - threats<BLACK>(position, survey);
    sum +=
        make_score(king_danger<BLACK>(position, survey) - king_danger<WHITE>(position, survey),
                   passed_extras<WHITE>(position, survey) - passed_extras<BLACK>(position, survey));
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
    if (position.pieces[WHITE][KING] == 0 || position.pieces[BLACK][KING] == 0 ||
        dead_material(position))
        return 0;
    const Score sum = sum_of_terms(position);
    const int phase = game_phase(position);
    int value = (mg_value(sum) * phase + eg_value(sum) * (MAX_GAME_PHASE - phase)) / MAX_GAME_PHASE;
    value += position.side == WHITE ? TEMPO : -TEMPO;
    if (is_known_ending(position, phase)) {
        value += endgame_bonus(position);
        if (const int scale = endgame_scale(position, value); scale != FULL_SCALE)
            value = value * scale / FULL_SCALE;
    }
    return position.side == WHITE ? value : -value;
}

} // namespace brindlemoth
