// Shared by the tests of the evaluation: positions that no game reaches.
#pragma once

#include "board/position.h"

#include <functional>
#include <string>

namespace brindlemoth {

// Visits `count` random placements: one king a side, these men (as in a FEN) and up to max_others
// more, pawns on any rank, nothing else legal about them.
void for_random_placements(int count, const std::string& men, int max_others,
                           const std::function<void(Position&)>& visit);

} // namespace brindlemoth
