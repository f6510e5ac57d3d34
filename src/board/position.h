// The position record, the keys that hash it, and its conversion from and to text.
// A Position holds no pointers: a plain copy is a full, independent position.
// position_set_fen() builds one; make_move() and its companions (board/make_move.h) change it.
#pragma once

#include "board/score.h"
#include "board/types.h"

namespace brindlemoth {

constexpr int MAX_UNDO = 1024;

// What one played move cannot give back by itself: the state from before it.
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
    SquareContent board[64];
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

extern const char* const starting_fen;

// Piece-square values by piece code and square, from White's point of view. Filled by the
// evaluation; the board code only adds and subtracts its entries.
extern Score psq_table[12][64];

// Hash keys, filled by init_keys().
extern Key piece_keys[12][64];
extern Key castling_keys[16]; // by the whole rights mask
extern Key ep_file_keys[8];
extern Key side_key; // in the key when Black is to move

// Fills the hash keys from a fixed seed. Called once, before the first position is set up.
void init_keys();

// Builds the position from a FEN text, dropping all history. Anything is accepted and missing
// fields get defaults. Returns false if the board field held an unusable character; the record
// then holds the pieces read so far, White to move, and is as safe to use as any other. Its key
// lacks the castling term, since that field was never read.
bool position_set_fen(Position& position, const char* text);

// key and pawn_key computed from scratch, for tests and assertions.
Key compute_key(const Position& position);
Key compute_pawn_key(const Position& position);
// The sum that psq would be if the position were set up now.
Score compute_psq(const Position& position);
// True when the three views of the board (pieces, occupied, board) agree with each other.
bool views_agree(const Position& position);

// Coordinate text of a move, "0000" for MOVE_NONE and MOVE_NULL. The text stands in one static
// buffer of 6 characters that the next call overwrites.
const char* move_to_text(Move move);

// Prints the board and the state fields on standard output.
void print_board(const Position& position);

} // namespace brindlemoth
