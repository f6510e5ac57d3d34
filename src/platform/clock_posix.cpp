#include "platform/clock.h"

#include <ctime>

namespace brindlemoth {

std::int64_t tick_count() {
    constexpr std::int64_t MILLISECONDS_PER_SECOND = 1000;
    constexpr std::int64_t NANOSECONDS_PER_MILLISECOND = 1'000'000;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * MILLISECONDS_PER_SECOND + now.tv_nsec / NANOSECONDS_PER_MILLISECOND;
}

} // namespace brindlemoth
