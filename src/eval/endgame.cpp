#include "eval/endgame.h"

#include "eval/geometry.h"
#include "eval/kpk.h"

#include <algorithm>
#include <limits>

namespace brindlemoth {

namespace {

// Ranks counted from 0.
constexpr int FIFTH_RANK = 4;
constexpr int SIXTH_RANK = 5;
constexpr int SEVENTH_RANK = 6;
constexpr int EIGHTH_RANK = 7;

// Combined with a square by exclusive or.
constexpr int MIRROR_RANKS = 56;
constexpr int MIRROR_FILES = 7;

// A queen or rook against a bare king: the base value, and what each square of distance takes off.
constexpr int HEAVY_PIECE_MATE = 130;
constexpr int WEAK_KING_TO_EDGE = -20;
constexpr int KING_TO_KING = -10;

// Bishop and knight against a bare king, by square of the weak king, if the bishop is on squares of
// a1's colour. Rank 1 is the first row, and the a-file the first column.
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

// Added to it by the distance of the two kings.
constexpr int KING_CLOSENESS[8] = {0, 0, 100, 80, 60, 40, 20, 10};

// Rook and pawn about to promote against rook: the base value, and what each file between the weak
// king and the pawn adds.
constexpr int BRIDGE = 300;
constexpr int BRIDGE_PER_FILE = 20;

constexpr int QUEEN_POINTS = 9;
constexpr int ROOK_POINTS = 5;
constexpr int MINOR_POINTS = 3;

// A factor and the highest number to which it applies, in ascending order.
struct ScaleStep {
    int max;
    int scale;
};
constexpr int NO_MAX = std::numeric_limits<int>::max();
constexpr ScaleStep PAWNLESS_SCALE[] = {{3, 16}, {5, 64}, {8, 128}, {NO_MAX, FULL_SCALE}};
constexpr ScaleStep OPPOSITE_BISHOPS_SCALE[] = {{2, 32}, {4, 96}, {NO_MAX, 160}}; // by pawns

bool exactly_one(Bitboard b) {
    return std::has_single_bit(b);
}

bool bare_king(const Position& position, int colour) {
    return position.occupied[colour] == position.pieces[colour][KING];
}

int distance_to_edge(int square) {
    return std::min({file_of(square), 7 - file_of(square), rank_of(square), 7 - rank_of(square)});
}

// The bonus for mating a bare king with one queen or rook, or with bishop and knight.
int mating_bonus(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    if (own[PAWN] != 0)
        return 0;
    const int strong_king = king_square(position, strong);
    const int weak_king = king_square(position, strong ^ 1);
    const Bitboard minors = own[KNIGHT] | own[BISHOP];
    const Bitboard heavies = own[ROOK] | own[QUEEN];
    if (minors == 0 && exactly_one(heavies))
        return HEAVY_PIECE_MATE + WEAK_KING_TO_EDGE * distance_to_edge(weak_king) +
               KING_TO_KING * distance(strong_king, weak_king);
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

// The bonus for the win by building a bridge: the pawn on the seventh rank, its king in front of it
// or beside that square, and the weak king cut off by at least one file.
int bridge_bonus(const Position& position, int strong) {
    if (!rook_and_pawn_against_rook(position, strong))
        return 0;
    const int pawn = lowest_square(position.pieces[strong][PAWN]);
    const int strong_king = king_square(position, strong);
    const int weak_king_files = file_distance(king_square(position, strong ^ 1), pawn);
    const bool rook_pawn = (square_bit(pawn) & (FILE_A | FILE_H)) != 0;
    if (relative_rank(pawn, strong) == SEVENTH_RANK && !rook_pawn &&
        relative_rank(strong_king, strong) == EIGHTH_RANK &&
        file_distance(strong_king, pawn) <= 1 && weak_king_files >= 2)
        return BRIDGE + BRIDGE_PER_FILE * weak_king_files;
    return 0;
}

int bonus_for(const Position& position, int strong) {
    return bare_king(position, strong ^ 1) ? mating_bonus(position, strong)
                                           : bridge_bonus(position, strong);
}

bool is_kpk(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    return exactly_one(own[PAWN]) && position.occupied[strong] == (own[KING] | own[PAWN]) &&
           bare_king(position, strong ^ 1);
}

// Looks king and pawn against king up. Mirrors the board so that the strong side is White and its
// pawn is on files a to d.
bool kpk_is_drawn(const Position& position, int strong) {
    int pawn = lowest_square(position.pieces[strong][PAWN]);
    int strong_king = king_square(position, strong);
    int weak_king = king_square(position, strong ^ 1);
    const int mirror =
        (strong == BLACK ? MIRROR_RANKS : 0) | (file_of(pawn) >= 4 ? MIRROR_FILES : 0);
    pawn ^= mirror;
    strong_king ^= mirror;
    weak_king ^= mirror;
    if (rank_of(pawn) == 0 || rank_of(pawn) == EIGHTH_RANK)
        return true;
    const int weak_to_move = position.side == strong ? 0 : 1;
    return kpk_table[kpk_index(strong_king, weak_king, weak_to_move, pawn)] != KPK_WIN;
}

// Rook pawns on one file and bishops that do not control the promotion corner, against a bare king
// in or beside the corner: a draw.
bool wrong_bishop(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    if (own[BISHOP] == 0 || own[PAWN] == 0 || (own[KNIGHT] | own[ROOK] | own[QUEEN]) != 0 ||
        !bare_king(position, strong ^ 1))
        return false;
    const bool on_a_file = (own[PAWN] & ~FILE_A) == 0;
    const bool on_h_file = (own[PAWN] & ~FILE_H) == 0;
    if (!on_a_file && !on_h_file)
        return false;
    const int corner = make_square(on_a_file ? 0 : 7, strong == WHITE ? EIGHTH_RANK : 0);
    return (own[BISHOP] & squares_of_parity(square_parity(corner))) == 0 &&
           distance(king_square(position, strong ^ 1), corner) <= 1;
}

// Rook and pawn against rook: 0 for two drawn patterns, FULL_SCALE otherwise.
int krpkr_scale(const Position& position, int strong) {
    if (!rook_and_pawn_against_rook(position, strong))
        return FULL_SCALE;
    const int weak = strong ^ 1;
    const int mirror = strong == WHITE ? 0 : MIRROR_RANKS; // so that the pawn moves up the board
    const int pawn = lowest_square(position.pieces[strong][PAWN]) ^ mirror;
    const int strong_king = king_square(position, strong) ^ mirror;
    const int weak_king = king_square(position, weak) ^ mirror;
    const int weak_rook = lowest_square(position.pieces[weak][ROOK]) ^ mirror;
    const int tempo = position.side == strong ? 1 : 0;

    const int promotion_square = make_square(file_of(pawn), EIGHTH_RANK);
    const bool third_rank_defence = distance(weak_king, promotion_square) <= 1 &&
                                    rank_of(strong_king) <= FIFTH_RANK &&
                                    rank_of(weak_rook) == SIXTH_RANK;
    const bool blockade = weak_king == pawn + 8 && distance(strong_king, pawn) - tempo >= 2 &&
                          distance(strong_king, weak_rook) - tempo >= 2;
    const bool drawn = rank_of(pawn) <= FIFTH_RANK && (third_rank_defence || blockade);
    return drawn ? 0 : FULL_SCALE;
}

int scale_for(const ScaleStep* step, int number) {
    while (number > step->max)
        ++step;
    return step->scale;
}

// The factor for a strong side without pawns, by its surplus in pieces.
int pawnless_scale(const Position& position, int strong) {
    const Bitboard* const own = position.pieces[strong];
    const Bitboard* const enemy = position.pieces[strong ^ 1];
    const int points = QUEEN_POINTS * (popcount(own[QUEEN]) - popcount(enemy[QUEEN])) +
                       ROOK_POINTS * (popcount(own[ROOK]) - popcount(enemy[ROOK])) +
                       MINOR_POINTS * (popcount(own[KNIGHT] | own[BISHOP]) -
                                       popcount(enemy[KNIGHT] | enemy[BISHOP]));
    return scale_for(PAWNLESS_SCALE, points);
}

int opposite_bishops_scale(const Position& position) {
    const Bitboard* const white = position.pieces[WHITE];
    const Bitboard* const black = position.pieces[BLACK];
    if ((white[KNIGHT] | white[ROOK] | white[QUEEN] | black[KNIGHT] | black[ROOK] | black[QUEEN]) !=
            0 ||
        !exactly_one(white[BISHOP]) || !exactly_one(black[BISHOP]) ||
        !exactly_one((white[BISHOP] | black[BISHOP]) & EVEN_SQUARES))
        return FULL_SCALE;
    return scale_for(OPPOSITE_BISHOPS_SCALE, popcount(white[PAWN] | black[PAWN]));
}

} // namespace

int endgame_bonus(const Position& position) {
    // Every pattern is worth more than 0.
    if (const int bonus = bonus_for(position, WHITE); bonus != 0)
        return bonus;
    return -bonus_for(position, BLACK);
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
