#include "eval/endgame.h"

#include "eval/geometry.h"
#include "eval/kpk.h"

#include <algorithm>

namespace brindlemoth {

namespace {

// Bishop and knight against a bare king: where the weak king stands when the bishop moves on the
// squares of a1's colour. Rank 1 in the first row, the a-file in the first column.
// clang-format off
constexpr int MATING_CORNER[64] = {
    200, 190, 180, 170, 160, 150, 140, 130,
    190, 180, 170, 160, 150, 140, 130, 140,
    180, 170, 155, 140, 140, 125, 140, 150,
    170, 160, 140, 120, 110, 140, 150, 160,
    160, 150, 140, 110, 120, 140, 160, 170,
    150, 140, 125, 140, 140, 155, 170, 180,
    140, 130, 140, 150, 160, 170, 180, 190,
    130, 140, 150, 160, 170, 180, 190, 200,
};
// clang-format on

// By the distance of the two kings.
constexpr int KING_CLOSENESS[8] = {0, 0, 100, 80, 60, 40, 20, 10};

bool exactly_one(Bitboard b) {
    return std::has_single_bit(b);
}

bool bare_king(const Position& position, int colour) {
    return position.occupied[colour] == position.pieces[colour][KING];
}

int distance_to_edge(int square) {
    return std::min({file_of(square), 7 - file_of(square), rank_of(square), 7 - rank_of(square)});
}

// The strong side mates a bare king with one heavy piece or with bishop and knight.
int mating_bonus(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    if (own[PAWN] != 0)
        return 0;
    const int strong_king = king_square(position, strong);
    const int weak_king = king_square(position, strong ^ 1);
    const Bitboard minors = own[KNIGHT] | own[BISHOP];
    const Bitboard heavies = own[ROOK] | own[QUEEN];
    if (minors == 0 && exactly_one(heavies))
        return 10 * (13 - 2 * distance_to_edge(weak_king) - distance(strong_king, weak_king));
    if (heavies == 0 && exactly_one(own[BISHOP]) && exactly_one(own[KNIGHT])) {
        const bool mirrored = square_parity(lowest_square(own[BISHOP])) != 0;
        return MATING_CORNER[mirrored ? flip_rank(weak_king) : weak_king] +
               KING_CLOSENESS[distance(strong_king, weak_king)];
    }
    return 0;
}

bool rook_and_pawn_against_rook(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    const Bitboard* const enemy = position.pieces[strong ^ 1];
    return (own[KNIGHT] | own[BISHOP] | own[QUEEN] | enemy[PAWN] | enemy[KNIGHT] | enemy[BISHOP] |
            enemy[QUEEN]) == 0 &&
           exactly_one(own[PAWN]) && exactly_one(own[ROOK]) && exactly_one(enemy[ROOK]);
}

// The pawn on the seventh with its king on or beside the promotion square, and the weak
// king cut off: a win by building a bridge.
int bridge_bonus(const Position& position, int strong) {
    if (!rook_and_pawn_against_rook(position, strong))
        return 0;
    const int pawn = lowest_square(position.pieces[strong][PAWN]);
    const int strong_king = king_square(position, strong);
    const int cut_off = file_distance(king_square(position, strong ^ 1), pawn);
    const bool knight_to_bishop_file = file_of(pawn) >= 1 && file_of(pawn) <= 6;
    if (relative_rank(pawn, strong) == 6 && knight_to_bishop_file &&
        relative_rank(strong_king, strong) == 7 && file_distance(strong_king, pawn) <= 1 &&
        cut_off >= 2)
        return 20 * (15 + cut_off);
    return 0;
}

int bonus_for(const Position& position, int strong) {
    return bare_king(position, strong ^ 1) ? mating_bonus(position, strong)
                                           : bridge_bonus(position, strong);
}

// King and a lone pawn against a bare king, looked up from the side of the pawn.
bool kpk_is_drawn(const Position& position, int strong) {
    int pawn = lowest_square(position.pieces[strong][PAWN]);
    int strong_king = king_square(position, strong);
    int weak_king = king_square(position, strong ^ 1);
    if (strong == BLACK) {
        pawn = flip_rank(pawn);
        strong_king = flip_rank(strong_king);
        weak_king = flip_rank(weak_king);
    }
    if (file_of(pawn) >= 4) {
        pawn ^= 7;
        strong_king ^= 7;
        weak_king ^= 7;
    }
    if (rank_of(pawn) == 0 || rank_of(pawn) == 7)
        return true;
    const int weak_to_move = position.side == strong ? 0 : 1;
    return kpk_table[kpk_index(strong_king, weak_king, weak_to_move, pawn)] != KPK_WIN;
}

bool is_kpk(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    return exactly_one(own[PAWN]) && position.occupied[strong] == (own[KING] | own[PAWN]) &&
           bare_king(position, strong ^ 1);
}

// Rook pawns that promote on a corner which no bishop of theirs controls, the weak king there.
bool wrong_bishop(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    if (own[BISHOP] == 0 || own[PAWN] == 0 || (own[KNIGHT] | own[ROOK] | own[QUEEN]) != 0 ||
        !bare_king(position, strong ^ 1))
        return false;
    const bool on_a_file = (own[PAWN] & ~FILE_A) == 0;
    const bool on_h_file = (own[PAWN] & ~FILE_H) == 0;
    if (!on_a_file && !on_h_file)
        return false;
    const int corner = make_square(on_a_file ? 0 : 7, strong == WHITE ? 7 : 0);
    return (own[BISHOP] & squares_of_parity(square_parity(corner))) == 0 &&
           distance(king_square(position, strong ^ 1), corner) <= 1;
}

// The factor for a strong side without pawns, by its surplus in pieces.
int pawnless_scale(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    const Bitboard* const enemy = position.pieces[strong ^ 1];
    const int points =
        9 * (popcount(own[QUEEN]) - popcount(enemy[QUEEN])) +
        5 * (popcount(own[ROOK]) - popcount(enemy[ROOK])) +
        3 * (popcount(own[KNIGHT] | own[BISHOP]) - popcount(enemy[KNIGHT] | enemy[BISHOP]));
    if (points <= 3)
        return 16;
    if (points <= 5)
        return 64;
    return points <= 8 ? 128 : FULL_SCALE;
}

int opposite_bishops_scale(const Position& position) {
    const Bitboard* const white = position.pieces[WHITE];
    const Bitboard* const black = position.pieces[BLACK];
    if ((white[KNIGHT] | white[ROOK] | white[QUEEN] | black[KNIGHT] | black[ROOK] | black[QUEEN]) !=
            0 ||
        !exactly_one(white[BISHOP]) || !exactly_one(black[BISHOP]) ||
        !exactly_one((white[BISHOP] | black[BISHOP]) & EVEN_SQUARES))
        return FULL_SCALE;
    const int pawns = popcount(white[PAWN] | black[PAWN]);
    if (pawns <= 2)
        return 32;
    return pawns <= 4 ? 96 : 160;
}

} // namespace

int endgame_bonus(const Position& position) {
    // Every pattern that fits is worth more than nothing.
    if (const int bonus = bonus_for(position, WHITE); bonus != 0)
        return bonus;
    return -bonus_for(position, BLACK);
}

int krpkr_scale(const Position& position, int strong) {
    if (!rook_and_pawn_against_rook(position, strong))
        return FULL_SCALE;
    const int weak = strong ^ 1;
    const int mirror = strong == WHITE ? 0 : 56; // the pawn moves up the board
    const int pawn = lowest_square(position.pieces[strong][PAWN]) ^ mirror;
    const int strong_king = king_square(position, strong) ^ mirror;
    const int weak_king = king_square(position, weak) ^ mirror;
    const int weak_rook = lowest_square(position.pieces[weak][ROOK]) ^ mirror;
    const int tempo = position.side == strong ? 1 : 0;

    if (rank_of(pawn) > 4)
        return FULL_SCALE;
    const bool third_rank_defence = distance(weak_king, make_square(file_of(pawn), 7)) <= 1 &&
                                    rank_of(strong_king) <= 4 && rank_of(weak_rook) == 5;
    const bool blockade = weak_king == pawn + 8 && distance(strong_king, pawn) - tempo >= 2 &&
                          distance(strong_king, weak_rook) - tempo >= 2;
    return third_rank_defence || blockade ? 0 : FULL_SCALE;
}

int endgame_scale(const Position& position, int value) {
    for (const int side : {WHITE, BLACK})
        if (is_kpk(position, side) && kpk_is_drawn(position, side))
            return 0;
    const int strong = value > 0 ? WHITE : BLACK;
    if (wrong_bishop(position, strong))
        return 0;
    if (const int scale = krpkr_scale(position, strong); scale != FULL_SCALE)
        return scale;
    if (position.pieces[strong][PAWN] == 0) {
        if (const int scale = pawnless_scale(position, strong); scale != FULL_SCALE)
            return scale;
    }
    return opposite_bishops_scale(position);
}

} // namespace brindlemoth
