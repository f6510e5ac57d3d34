// Pawn structure: the terms that look at pawns alone, cached by pawn_key.
// Called by evaluate() and the trace.
#pragma once

#include "board/position.h"

namespace brindlemoth {

struct PawnEntry {
    Key key;
    Score score;
};

constexpr int PAWN_CACHE_SIZE = 8192;

// Direct-mapped by the low bits of pawn_key and never cleared. The zero slot that it starts with
// is right as it stands: no pawns have key 0 and score 0.
extern PawnEntry pawn_cache[PAWN_CACHE_SIZE];

// Pawn structure, White minus Black, term by term.
Score rate_pawn_structure(const Position& position);

// The same through the cache.
inline Score evaluate_pawns(const Position& position) {
    PawnEntry& entry = pawn_cache[position.pawn_key & (PAWN_CACHE_SIZE - 1)];
    if (entry.key != position.pawn_key)
        entry = {position.pawn_key, rate_pawn_structure(position)};
    return entry.score;
}

} // namespace brindlemoth
