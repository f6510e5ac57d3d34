// Attack tests and legality. A move is legal if the king of the side that makes it is not attacked
// afterwards. A side without a king has no legal moves and is never in check. Of several kings,
// only the one on the lowest square counts.
#pragma once

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/position.h"

namespace brindlemoth {

// Whether a piece of by_colour attacks the square. `occupancy` holds the squares that block
// sliders.
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

// What the legality of all moves of a position depends on. A search node computes it once.
struct LegalityMasks {
    Bitboard checkers; // enemy pieces that attack the king
    // Moves from these squares need the full legality test: the kings, and every piece that stands
    // alone between the king and an enemy slider, which makes an own piece a pinned one.
    Bitboard needs_full_test;
    // Where all other pieces may go: everywhere when not in check; otherwise to the only checker
    // and the ray between it and the king.
    Bitboard check_mask;
};

LegalityMasks legality_masks(const Position& position);

// True when the pseudo-legal move does not leave the mover's king attacked. The attacks on the
// king are computed with the squares occupied as they are after the move.
bool move_is_legal(const Position& position, Move move);

// The same with the masks of the position, which few moves need the full test for.
inline bool move_is_legal(const Position& position, const LegalityMasks& masks, Move move) {
    if ((masks.needs_full_test >> move_from(move) & 1) != 0 || move_flag(move) == FLAG_EN_PASSANT)
        return move_is_legal(position, move);
    return (masks.check_mask >> move_to(move) & 1) != 0;
}

// All legal moves of the side to move, in the order of generate_pseudo_legal.
void generate_legal(const Position& position, MoveList& list);

} // namespace brindlemoth
