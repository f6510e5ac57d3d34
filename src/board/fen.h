// Setting up a position from a FEN.
#pragma once

#include "board/position.h"

namespace brindlemoth {

constexpr const char* starting_fen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// Sets up the position and empties its undo stack. Any text is accepted, and missing fields get
// defaults: White to move, no castling rights, no en-passant square, clock 0, move number 1.
// Returns false if the board field holds an unusable character. The position then has the pieces
// read so far and White to move, and is as safe to use as any other. Its key lacks the castling
// term, and the move number is 0.
bool position_set_fen(Position& position, const char* text);

} // namespace brindlemoth
