// The position key of the Polyglot book format. It is not related to the key that a Position keeps
// for the search, and is computed from scratch for each book probe.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

std::uint64_t polyglot_key(const Position& position);

} // namespace brindlemoth
