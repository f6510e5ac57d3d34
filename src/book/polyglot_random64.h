// The 781 random numbers published with the Polyglot book format, from which polyglot_key()
// computes the keys of a book file.
#pragma once

#include <cstdint>

namespace brindlemoth {

// The index of the first number of each group. The numbers of the pieces are ordered by the kind of
// piece, and by square within a kind.
enum : int {
    POLYGLOT_PIECES = 0,
    POLYGLOT_CASTLING = 768,
    POLYGLOT_EN_PASSANT = 772,
    POLYGLOT_WHITE_TO_MOVE = 780,
    POLYGLOT_RANDOM64_COUNT = 781,
};

extern const std::uint64_t POLYGLOT_RANDOM64[POLYGLOT_RANDOM64_COUNT];

} // namespace brindlemoth
