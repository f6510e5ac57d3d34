// The random keys whose XOR is the hash of a position: key for all of it, pawn_key for its pawns.
#pragma once

#include "board/position.h"

namespace brindlemoth {

extern Key piece_keys[PIECE_COUNT][SQUARE_COUNT];
extern Key castling_keys[16]; // by the mask of all rights; also 0 has a key
extern Key ep_file_keys[8];
extern Key side_key; // in the key when Black is to move

// Fills the keys from a fixed seed. Called once, before the first position is set up.
void init_keys();

// key and pawn_key computed from scratch, for tests and assertions.
Key compute_key(const Position& position);
Key compute_pawn_key(const Position& position);

} // namespace brindlemoth
