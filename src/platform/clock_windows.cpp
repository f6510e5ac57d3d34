#include "platform/clock.h"

#include <windows.h>

namespace brindlemoth {

std::int64_t tick_count() {
    return static_cast<std::int64_t>(GetTickCount64());
}

} // namespace brindlemoth
