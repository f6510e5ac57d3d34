// The position key of the Polyglot book format. It has nothing to do with the key that the
// position carries along: it is computed from scratch for each book probe.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

std::uint64_t polyglot_key(const Position& position);

} // namespace brindlemoth
