// A monotonic clock in milliseconds.
#pragma once

#include <cstdint>

namespace brindlemoth {

// Milliseconds since a fixed moment, which differs between systems. Never decreases.
std::int64_t tick_count();

} // namespace brindlemoth
