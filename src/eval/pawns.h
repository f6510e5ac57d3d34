// Pawn structure: the terms that depend on pawns alone, cached by pawn_key.
// Called by evaluate() and the trace.
#pragma once

#include "board/position.h"

namespace brindlemoth {

struct PawnEntry {
    Key key;
    Score score;
};

constexpr int PAWN_CACHE_SIZE = 8192;

// Direct-mapped by the low bits of pawn_key and never cleared. The initial zeros are a valid entry:
// a position without pawns has the key 0 and the score 0.
extern PawnEntry pawn_cache[PAWN_CACHE_SIZE];

// Computes the pawn structure, White minus Black.
Score compute_pawn_structure(const Position& position);

// The same, from the cache if it is there.
inline Score evaluate_pawns(const Position& position) {
    PawnEntry& entry = pawn_cache[position.pawn_key & (PAWN_CACHE_SIZE - 1)];
    if (entry.key != position.pawn_key)
        entry = {position.pawn_key, compute_pawn_structure(position)};
    return entry.score;
}

} // namespace brindlemoth
