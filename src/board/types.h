// The types of the whole program: colours, pieces, squares, bitboards, moves and move lists. They
// are integers with named values, so that they index tables without casts.
#pragma once

#include <cstdint>

namespace brindlemoth {

using Bitboard = std::uint64_t; // bit n stands for square n
using Key = std::uint64_t;

// Colours.
enum : int { WHITE = 0, BLACK = 1 };

// Piece types. NO_CAPTURE stands for the captured type of a move that captures nothing.
enum : int { PAWN, KNIGHT, BISHOP, ROOK, QUEEN, KING, NO_CAPTURE };

// A piece code is colour * 6 + type.
constexpr int PIECE_COUNT = 12;
constexpr char PIECE_LETTERS[] = "PNBRQKpnbrqk"; // by piece code

// The content of a square of the board: a piece code or EMPTY_SQUARE. This is an enumeration
// because the compiler has to assume that a store to an 8-bit integer changes any other variable.
enum SquareContent : std::uint8_t { EMPTY_SQUARE = PIECE_COUNT };

constexpr int make_piece(int colour, int type) {
    return colour * 6 + type;
}
// Of a piece code. The result for EMPTY_SQUARE has no meaning.
constexpr int piece_colour(int piece) {
    return piece < make_piece(BLACK, PAWN) ? WHITE : BLACK;
}
constexpr int piece_type(int piece) {
    return piece - make_piece(piece_colour(piece), PAWN);
}

// Squares: rank * 8 + file, both from 0; a1 is 0, h8 is 63.
// clang-format off
enum : int {
    A1, B1, C1, D1, E1, F1, G1, H1,
    A2, B2, C2, D2, E2, F2, G2, H2,
    A3, B3, C3, D3, E3, F3, G3, H3,
    A4, B4, C4, D4, E4, F4, G4, H4,
    A5, B5, C5, D5, E5, F5, G5, H5,
    A6, B6, C6, D6, E6, F6, G6, H6,
    A7, B7, C7, D7, E7, F7, G7, H7,
    A8, B8, C8, D8, E8, F8, G8, H8,
    NO_SQUARE, SQUARE_COUNT = 64
};
// clang-format on

constexpr int file_of(int square) {
    return square & 7;
}
constexpr int rank_of(int square) {
    return square >> 3;
}
constexpr int make_square(int file, int rank) {
    return rank * 8 + file;
}
// Whether file and rank are both from 0 to 7.
constexpr bool on_board(int file, int rank) {
    return ((file | rank) & ~7) == 0;
}
// The square with its rank mirrored: a1 becomes a8.
constexpr int flip_rank(int square) {
    return square ^ 56;
}
// 0 for a square of the colour of a1, 1 for one of the colour of b1.
constexpr int square_parity(int square) {
    return (file_of(square) + rank_of(square)) & 1;
}

// Castling rights, a four-bit mask.
enum : int { WHITE_SHORT = 1, WHITE_LONG = 2, BLACK_SHORT = 4, BLACK_LONG = 8 };

// A move: bits 0 to 5 the from-square, 6 to 11 the to-square, 12 to 15 the flag.
using Move = std::uint16_t;

// Move flags. Bit 3 of a flag means promotion, bit 2 capture. The type of the promoted piece is
// (flag & 3) + 1.
enum : int {
    FLAG_QUIET = 0,
    FLAG_DOUBLE_PUSH = 1,
    FLAG_SHORT_CASTLING = 2,
    FLAG_LONG_CASTLING = 3,
    FLAG_CAPTURE = 4,
    FLAG_EN_PASSANT = 5,
    FLAG_PROMOTION = 8,          // to a knight; + 1 bishop, + 2 rook, + 3 queen
    FLAG_PROMOTION_CAPTURE = 12, // to a knight, with capture; + 1, + 2, + 3 likewise
};

constexpr Move MOVE_NONE = 0;
constexpr Move MOVE_NULL = 65; // from b1 to b1: a null move

constexpr Move make_move_code(int from, int to, int flag) {
    return static_cast<Move>(from | (to << 6) | (flag << 12));
}
constexpr int move_from(Move move) {
    return move & 63;
}
constexpr int move_to(Move move) {
    return (move >> 6) & 63;
}
// From-square and to-square in one number from 0 to 4095.
constexpr int move_squares(Move move) {
    return move & 4095;
}
constexpr int move_flag(Move move) {
    return move >> 12;
}
constexpr bool is_promotion(Move move) {
    return (move & 0x8000) != 0;
}
constexpr bool is_capture(Move move) {
    return (move & 0x4000) != 0;
}
constexpr bool is_castling(Move move) {
    return move_flag(move) == FLAG_SHORT_CASTLING || move_flag(move) == FLAG_LONG_CASTLING;
}
// The type of the piece that the pawn becomes. The result for other moves has no meaning.
constexpr int promoted_type(Move move) {
    return ((move >> 12) & 3) + 1;
}

// The capacity of every list of moves. Only a FEN with more pieces than a game can have gives more
// moves, and these are dropped.
constexpr int MAX_MOVES = 256;

struct MoveList {
    Move moves[MAX_MOVES];
    int count;
};

} // namespace brindlemoth
