// The 781 numbers published with the Polyglot book format, which every book file is built on.
// polyglot_key() reads them.
#pragma once

#include <cstdint>

namespace brindlemoth {

// Where the groups begin. Pieces come first: 64 numbers by square for each kind of piece.
enum : int {
    POLYGLOT_PIECES = 0,
    POLYGLOT_CASTLING = 768,
    POLYGLOT_EN_PASSANT = 772,
    POLYGLOT_WHITE_TO_MOVE = 780,
    POLYGLOT_RANDOM64_COUNT = 781,
};

extern const std::uint64_t polyglot_random64[POLYGLOT_RANDOM64_COUNT];

} // namespace brindlemoth
