// A monotonic clock in milliseconds.
#pragma once

#include <cstdint>

namespace brindlemoth {

// Milliseconds since some fixed moment; never runs backwards.
std::int64_t tick_count();

} // namespace brindlemoth
