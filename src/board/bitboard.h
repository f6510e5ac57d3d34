// Operations on bitboards, and some masks.
#pragma once

#include "board/types.h"

#include <bit>

namespace brindlemoth {

constexpr Bitboard FILE_A = 0x0101010101010101ULL;
constexpr Bitboard FILE_H = FILE_A << 7;
constexpr Bitboard RANK_1 = 0xFFULL;
constexpr Bitboard RANK_3 = RANK_1 << 16;
constexpr Bitboard RANK_6 = RANK_1 << 40;
constexpr Bitboard RANK_8 = RANK_1 << 56;

constexpr Bitboard square_bit(int square) {
    return 1ULL << square;
}
constexpr Bitboard file_mask(int file) {
    return FILE_A << file;
}
constexpr Bitboard rank_mask(int rank) {
    return RANK_1 << (8 * rank);
}

// The squares strictly between two squares of one rank, file or diagonal; none for other squares.
constexpr Bitboard squares_between(int a, int b) {
    const int files = file_of(b) - file_of(a);
    const int ranks = rank_of(b) - rank_of(a);
    if (a == b || (files != 0 && ranks != 0 && files != ranks && files != -ranks))
        return 0;
    const auto sign = [](int n) { return (n > 0) - (n < 0); };
    const int step = make_square(sign(files), sign(ranks));
    Bitboard squares = 0;
    for (int square = a + step; square != b; square += step)
        squares |= square_bit(square);
    return squares;
}

constexpr int popcount(Bitboard b) {
    return std::popcount(b);
}
// The lowest set square. Requires b != 0.
constexpr int lowest_square(Bitboard b) {
    return std::countr_zero(b);
}
// Removes and returns the lowest set square. Requires b != 0.
constexpr int pop_lowest(Bitboard& b) {
    const int square = std::countr_zero(b);
    b &= b - 1;
    return square;
}
// The same for the highest.
constexpr int pop_highest(Bitboard& b) {
    const int square = 63 - std::countl_zero(b);
    b ^= 1ULL << square;
    return square;
}
constexpr bool more_than_one(Bitboard b) {
    return (b & (b - 1)) != 0;
}

// From a square to the one in front of it, as the pawns of the colour move.
constexpr int forward_step(int colour) {
    return colour == WHITE ? 8 : -8;
}
// Each square moved by that step. A square that would leave the board is dropped.
constexpr Bitboard forward_squares(Bitboard squares, int colour) {
    return colour == WHITE ? squares << 8 : squares >> 8;
}
// The squares that pawns of the colour attack on the file to their left and right, as White sees
// the board. A square that would leave the board is dropped.
constexpr Bitboard left_pawn_attacks(Bitboard pawns, int colour) {
    return colour == WHITE ? (pawns & ~FILE_A) << 7 : (pawns & ~FILE_A) >> 9;
}
constexpr Bitboard right_pawn_attacks(Bitboard pawns, int colour) {
    return colour == WHITE ? (pawns & ~FILE_H) << 9 : (pawns & ~FILE_H) >> 7;
}
// Every square that a pawn of the colour on one of these squares attacks.
constexpr Bitboard pawn_attack_set(Bitboard pawns, int colour) {
    return left_pawn_attacks(pawns, colour) | right_pawn_attacks(pawns, colour);
}

} // namespace brindlemoth
