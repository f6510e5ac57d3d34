#include "search/limit_check.h"

#include "input/poll_input.h"
#include "platform/clock.h"
#include "search/time_budget.h"

namespace brindlemoth {

std::uint64_t node_count;
std::uint64_t emergency_look = EMERGENCY_INTERVAL;

namespace {

// Whether nothing but input can end the search.
bool is_endless() {
    return search_limits.infinite && search_limits.depth <= 0 && search_limits.nodes <= 0;
}

} // namespace

void start_watch() {
    node_count = 0;
    emergency_look = EMERGENCY_INTERVAL;
}

void watch_all() {
    if (tick_count() - search_time.start_time >= search_time.hard_limit)
        stop_flag = 1;
    if (search_limits.nodes > 0 && node_count >= static_cast<std::uint64_t>(search_limits.nodes))
        stop_flag = 1;
    watch_input();
}

void watch_input() {
    emergency_look = node_count + EMERGENCY_INTERVAL;
    poll_input();
    // A search that had to wait in the ring itself, with a quit behind it, finds nothing to read.
    if (is_endless() && quit_is_pending())
        stop_flag = 1;
}

} // namespace brindlemoth
