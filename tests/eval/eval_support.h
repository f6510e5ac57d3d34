// Random positions for the tests of the evaluation, including ones that no game reaches.
#pragma once

#include "board/position.h"

#include <functional>
#include <string>

namespace brindlemoth {

// Visits `count` random placements of one king a side, the given pieces (letters as in a FEN), and
// up to max_others more. Pawns may stand on any rank, and the side not to move may be in check.
void for_random_placements(int count, const std::string& pieces, int max_others,
                           const std::function<void(Position&)>& visit);

} // namespace brindlemoth
