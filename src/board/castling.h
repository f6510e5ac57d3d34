// The four castling moves: which squares they need and use.
#pragma once

#include "board/bitboard.h"

namespace brindlemoth {

struct CastlingMove {
    int right; // WHITE_SHORT to BLACK_LONG
    int king_from;
    int king_to;
    int rook_from;
    int rook_to; // also the square that the king passes
    Bitboard must_be_empty;
};

// By colour and side: the short one first.
constexpr CastlingMove CASTLING_MOVES[2][2] = {
    {{WHITE_SHORT, E1, G1, H1, F1, squares_between(E1, H1)},
     {WHITE_LONG, E1, C1, A1, D1, squares_between(E1, A1)}},
    {{BLACK_SHORT, E8, G8, H8, F8, squares_between(E8, H8)},
     {BLACK_LONG, E8, C8, A8, D8, squares_between(E8, A8)}}};

// The castling move of the colour with that flag, which must be a flag of castling.
constexpr const CastlingMove& castling_move(int colour, int flag) {
    return CASTLING_MOVES[colour][flag - FLAG_SHORT_CASTLING];
}

} // namespace brindlemoth
