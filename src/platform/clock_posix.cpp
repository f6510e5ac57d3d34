#include "platform/clock.h"

#include <ctime>

namespace brindlemoth {

std::int64_t tick_count() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

} // namespace brindlemoth
