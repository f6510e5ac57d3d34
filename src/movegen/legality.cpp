#include "movegen/legality.h"

#include "board/make_move.h"
#include "movegen/movegen.h"

namespace brindlemoth {

Bitboard attacks_from(int type, int square, int colour, Bitboard occupancy) {
    switch (type) {
    case PAWN:
        return pawn_attacks[colour][square];
    case KNIGHT:
        return knight_attacks[square];
    case BISHOP:
        return bishop_attacks(square, occupancy);
    case ROOK:
        return rook_attacks(square, occupancy);
    case QUEEN:
        return queen_attacks(square, occupancy);
    case KING:
        return king_attacks[square];
    default:
        return 0;
    }
}

bool move_is_legal(const Position& position, Move move) {
    const int us = position.side;
    const Bitboard from = square_bit(move_from(move));
    const Bitboard to = square_bit(move_to(move));
    const int flag = move_flag(move);

    // Play the move as far as an attack on the king can tell: who stands where of the mover's side
    // does not matter, only which squares are occupied, what is taken, and where the king is.
    Bitboard king = position.pieces[us][KING];
    Bitboard occupancy = (position.all_pieces ^ from) | to;
    Bitboard taken = to;
    if (king & from)
        king ^= from | to;
    if (flag == FLAG_EN_PASSANT) {
        taken = us == WHITE ? to >> 8 : to << 8;
        occupancy ^= taken;
    } else if (flag == FLAG_SHORT_CASTLING || flag == FLAG_LONG_CASTLING) {
        const RookMove rook = castling_rook_move(us, flag);
        occupancy ^= square_bit(rook.from) | square_bit(rook.to);
    }
    if (king == 0)
        return false;

    const int square = lowest_square(king);
    const Bitboard* const by = position.pieces[us ^ 1];
    const Bitboard leapers = (pawn_attacks[us][square] & by[PAWN]) |
                             (knight_attacks[square] & by[KNIGHT]) |
                             (king_attacks[square] & by[KING]);
    const Bitboard diagonal = (by[BISHOP] | by[QUEEN]) & ~taken;
    const Bitboard straight = (by[ROOK] | by[QUEEN]) & ~taken;
    return (leapers & ~taken) == 0 && (bishop_attacks(square, occupancy) & diagonal) == 0 &&
           (rook_attacks(square, occupancy) & straight) == 0;
}

void generate_legal(Position& position, MoveList& list) {
    Move buffer[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, buffer);
    list.count = 0;
    for (const Move* move = buffer; move != end; ++move)
        if (move_is_legal(position, *move))
            list.moves[list.count++] = *move;
}

} // namespace brindlemoth
