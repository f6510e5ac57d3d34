// Shared by the tests of the evaluation: positions that no game reaches, and colour mirrors.
#pragma once

#include "board/position.h"

#include <functional>
#include <ostream>
#include <string>

namespace brindlemoth {

// The same position with colours, ranks and side to move exchanged.
Position mirrored(const Position& position);

// Visits `count` random placements: one king a side, these men (as in a FEN) and up to max_others
// more, pawns on any rank, nothing else legal about them.
void for_random_placements(int count, const std::string& men, int max_others,
                           const std::function<void(Position&)>& visit);

// For readable failures.
inline void PrintTo(Score score, std::ostream* out) {
    *out << "S(" << mg_value(score) << ", " << (raw(score) - mg_value(score)) / 65536 << ")";
}

} // namespace brindlemoth
