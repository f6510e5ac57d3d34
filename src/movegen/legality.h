// Attack tests and legality: a move is legal exactly when the mover's king is not attacked after
// it. A side without a king has no legal moves and is never in check; of several kings the one on
// the lowest square counts.
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

// What one look around the king tells about all moves of a position. A search node takes it once.
struct LegalityMasks {
    Bitboard checkers; // enemy men that attack the king
    // The moves of these men have to be tried: every king, and what stands alone between the king
    // and an enemy slider.
    Bitboard tried;
    // Where any other man may go: everywhere, but in check only to the checker or in its way.
    Bitboard targets;
};

LegalityMasks legality_masks(const Position& position);

// True when the pseudo-legal move does not leave the mover's king attacked. The move is tried on a
// copy of the occupied squares; the position is only read.
bool move_is_legal(const Position& position, Move move);

// The same, where the masks of the position are at hand: few moves are tried.
inline bool move_is_legal(const Position& position, const LegalityMasks& masks, Move move) {
    if ((masks.tried >> move_from(move) & 1) != 0 || move_flag(move) == FLAG_EN_PASSANT)
        return move_is_legal(position, move);
    return (masks.targets >> move_to(move) & 1) != 0;
}

// All legal moves of the side to move, in the order of generate_pseudo_legal. The position is
// unchanged afterwards.
void generate_legal(Position& position, MoveList& list);

} // namespace brindlemoth
