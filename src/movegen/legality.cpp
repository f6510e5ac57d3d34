#include "movegen/legality.h"

#include "board/castling.h"
#include "movegen/generate.h"

namespace brindlemoth {

namespace {

struct PairTable {
    Bitboard squares[SQUARE_COUNT][SQUARE_COUNT];
};

constexpr PairTable BETWEEN = [] {
    PairTable table{};
    for (int a = 0; a < SQUARE_COUNT; ++a)
        for (int b = 0; b < SQUARE_COUNT; ++b)
            table.squares[a][b] = squares_between(a, b);
    return table;
}();

// The pawns, knights and kings of the opponent that attack the square.
inline Bitboard find_leaper_attackers(const Position& position, int square) {
    const int us = position.side;
    const Bitboard* const by = position.pieces[us ^ 1];
    return (pawn_attacks[us][square] & by[PAWN]) | (knight_attacks[square] & by[KNIGHT]) |
           (king_attacks[square] & by[KING]);
}

// The full legality test of a move. It needs only what an attack on the king depends on after the
// move: the occupied squares, the captured piece and the square of the king. Never inlined, so that
// the king moves of the only king, which are far more frequent, need no stack frame.
[[gnu::noinline]] bool king_is_safe_after(const Position& position, Move move) {
    const int us = position.side;
    const Bitboard from = square_bit(move_from(move));
    const Bitboard to = square_bit(move_to(move));
    const int flag = move_flag(move);

    Bitboard king = position.pieces[us][KING];
    Bitboard occupancy = (position.all_pieces ^ from) | to;
    Bitboard taken = to;
    if (king & from)
        king ^= from | to;
    if (flag == FLAG_EN_PASSANT) {
        taken = forward_squares(to, us ^ 1);
        occupancy ^= taken;
    } else if (is_castling(move)) {
        const CastlingMove& castling = castling_move(us, flag);
        occupancy ^= square_bit(castling.rook_from) | square_bit(castling.rook_to);
    }
    if (king == 0)
        return false;

    const int square = lowest_square(king);
    const Bitboard* const by = position.pieces[us ^ 1];
    const Bitboard diagonal = (by[BISHOP] | by[QUEEN]) & ~taken;
    const Bitboard straight = (by[ROOK] | by[QUEEN]) & ~taken;
    return (find_leaper_attackers(position, square) & ~taken) == 0 &&
           (bishop_attacks(square, occupancy) & diagonal) == 0 &&
           (rook_attacks(square, occupancy) & straight) == 0;
}

} // namespace

LegalityMasks legality_masks(const Position& position) {
    const int us = position.side;
    const Bitboard kings = position.pieces[us][KING];
    if (kings == 0)
        return {0, 0, 0};
    const int king = lowest_square(kings);
    const Bitboard* const by = position.pieces[us ^ 1];
    Bitboard checkers = find_leaper_attackers(position, king);
    Bitboard needs_full_test = kings;
    Bitboard check_rays = 0;

    // Enemy sliders that would attack the king on an empty board.
    Bitboard sliders = (bishop_attacks(king, 0) & (by[BISHOP] | by[QUEEN])) |
                       (rook_attacks(king, 0) & (by[ROOK] | by[QUEEN]));
    while (sliders != 0) {
        const int slider = pop_lowest(sliders);
        const Bitboard ray = BETWEEN.squares[king][slider];
        const Bitboard blockers = ray & position.all_pieces;
        if (blockers == 0) {
            checkers |= square_bit(slider);
            check_rays |= ray;
        } else if (!more_than_one(blockers)) {
            needs_full_test |= blockers;
        }
    }

    const Bitboard check_mask = checkers == 0             ? ~Bitboard{0}
                                : more_than_one(checkers) ? 0 // only the king can move
                                                          : checkers | check_rays;
    return {checkers, needs_full_test, check_mask};
}

bool move_is_legal(const Position& position, Move move) {
    const int us = position.side;
    const Bitboard from = square_bit(move_from(move));
    // The only king moves. Its attackers depend on no other change of the board: the rook of
    // castling comes from the edge and ends between the king and the square that the king left.
    if (position.pieces[us][KING] == from)
        return !square_attacked(move_to(move), us ^ 1, position.all_pieces ^ from, position);
    return king_is_safe_after(position, move);
}

void generate_legal(const Position& position, MoveList& list) {
    Move buffer[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, buffer);
    const LegalityMasks masks = legality_masks(position);
    list.count = 0;
    for (const Move* move = buffer; move != end; ++move)
        if (move_is_legal(position, masks, *move))
            list.moves[list.count++] = *move;
}

} // namespace brindlemoth
