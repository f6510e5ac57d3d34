// Attack tests and legality by trial: a move is legal exactly when the mover's king is not attacked
// after it. A side without a king has no legal moves and is never in check; of
// several kings the one on the lowest square counts.
#pragma once

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/position.h"

namespace brindlemoth {

// Squares that a piece of that type attacks. The colour matters for pawns only, the occupancy
// for sliders only. 0 for a type outside PAWN to KING. Where the type is known, the tables of
// board/attacks.h are quicker.
Bitboard attacks_from(int type, int square, int colour, Bitboard occupancy);

// True when a piece of by_colour attacks the square; sliders look through `occupancy`.
inline bool square_attacked(int square, int by_colour, Bitboard occupancy,
                            const Position& position) {
    const Bitboard* const by = position.pieces[by_colour];
    return (pawn_attacks[by_colour ^ 1][square] & by[PAWN]) != 0 ||
           (knight_attacks[square] & by[KNIGHT]) != 0 || (king_attacks[square] & by[KING]) != 0 ||
           (bishop_attacks(square, occupancy) & (by[BISHOP] | by[QUEEN])) != 0 ||
           (rook_attacks(square, occupancy) & (by[ROOK] | by[QUEEN])) != 0;
}

// Whether the side to move is in check.
inline bool in_check(const Position& position) {
    const Bitboard king = position.pieces[position.side][KING];
    return king != 0 &&
           square_attacked(lowest_square(king), position.side ^ 1, position.all_pieces, position);
}

// True when the pseudo-legal move does not leave the mover's king attacked. Every move is tried,
// on a copy of the occupied squares; the position is only read.
bool move_is_legal(const Position& position, Move move);

// All legal moves of the side to move, in the order of generate_pseudo_legal. The position is
// unchanged afterwards.
void generate_legal(Position& position, MoveList& list);

} // namespace brindlemoth
