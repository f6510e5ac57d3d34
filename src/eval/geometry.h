// Squares, ranks and distances as the terms of this folder use them. "In front of" a square means
// nearer to the colour's promotion rank. A relative rank counts from 0 at the colour's own first
// rank.
#pragma once

#include "board/bitboard.h"
#include "board/position.h"

#include <algorithm>
#include <cstdlib>

namespace brindlemoth {

constexpr int relative_rank(int square, int colour) {
    return colour == WHITE ? rank_of(square) : 7 - rank_of(square);
}

// The squares directly to the left and right of the given ones.
constexpr Bitboard beside_squares(Bitboard squares) {
    return ((squares & ~FILE_A) >> 1) | ((squares & ~FILE_H) << 1);
}

// All ranks strictly in front of the square.
template <int colour> constexpr Bitboard ranks_in_front(int square) {
    return colour == WHITE ? ~Bitboard{0} << 8 << (square & 56)
                           : ~Bitboard{0} >> 8 >> (56 - (square & 56));
}

// The given squares and all squares in front of them on their files.
template <int colour> constexpr Bitboard front_fill(Bitboard squares) {
    if constexpr (colour == WHITE) {
        squares |= squares << 8;
        squares |= squares << 16;
        squares |= squares << 32;
    } else {
        squares |= squares >> 8;
        squares |= squares >> 16;
        squares |= squares >> 32;
    }
    return squares;
}

// All squares of the files that are given as their squares on rank 1.
constexpr Bitboard whole_files(Bitboard rank_1_squares) {
    return rank_1_squares * FILE_A;
}

constexpr Bitboard EVEN_SQUARES = 0xAA55AA55AA55AA55ULL; // those of a1's colour

// All squares of one colour of the board, by square_parity().
constexpr Bitboard squares_of_parity(int parity) {
    return parity == 0 ? EVEN_SQUARES : ~EVEN_SQUARES;
}

// The square of the king: the lowest if there are several, a1 if there is none.
inline int king_square(const Position& position, int colour) {
    return lowest_square(position.pieces[colour][KING]) & 63;
}

inline int file_distance(int a, int b) {
    return std::abs(file_of(a) - file_of(b));
}

// The number of king moves from one square to the other on an empty board.
inline int distance(int a, int b) {
    return std::max(file_distance(a, b), std::abs(rank_of(a) - rank_of(b)));
}

} // namespace brindlemoth
