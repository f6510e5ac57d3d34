// The position record. It holds no pointers: a plain copy is a full, independent position.
// position_set_fen() (board/fen.h) sets it up, and only the functions of board/make_move.h change
// it.
#pragma once

#include "board/score.h"
#include "board/types.h"

namespace brindlemoth {

constexpr int MAX_UNDO = 1024;

// The state before a move that the move alone does not determine.
struct UndoRecord {
    int ep_square;
    int castling;
    int halfmove;
    int captured; // piece type taken, NO_CAPTURE if none; PAWN for en passant
    Key key;
    Key pawn_key;
};

// Aligned, so that the board fills one cache line.
struct alignas(64) Position {
    Bitboard pieces[2][6]; // by colour, then piece type
    Bitboard occupied[2];  // by colour
    Bitboard all_pieces;
    Key key;
    SquareContent board[SQUARE_COUNT];
    Key pawn_key;  // of the pawns alone
    Score psq;     // running sum of psq_table over all pieces, White minus Black
    int side;      // colour to move
    int ep_square; // the square a capturing pawn lands on, or NO_SQUARE
    int castling;
    int halfmove;              // half moves since the last capture or pawn move
    int fullmove;              // as the FEN counts them
    int undo_count;            // records in use in undo
    UndoRecord undo[MAX_UNDO]; // one record for each move played since the last FEN
};

// Piece-square values by piece code and square, from White's point of view. The evaluation fills
// the table, since its layer is above this one.
extern Score psq_table[PIECE_COUNT][SQUARE_COUNT];

// psq computed from scratch.
Score compute_psq(const Position& position);
// True when the three views of the board (pieces, occupied, board) agree with each other.
bool views_agree(const Position& position);

// Coordinate text of a move, "0000" for MOVE_NONE and MOVE_NULL, in a static buffer of 6 characters
// that the next call overwrites.
const char* move_to_text(Move move);

} // namespace brindlemoth
