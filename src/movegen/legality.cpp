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

bool move_is_legal(Position& position, Move move) {
    make_move(position, move);
    const int us = position.side ^ 1;
    const Bitboard king = position.pieces[us][KING];
    const bool legal = king != 0 && !square_attacked(lowest_square(king), position.side,
                                                     position.all_pieces, position);
    unmake_move(position, move);
    return legal;
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
