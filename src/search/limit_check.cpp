#include "search/limit_check.h"

#include "platform/clock.h"

namespace brindlemoth {

namespace {

// Whether only input can end the search.
bool is_endless() {
    return search_limits.infinite && search_limits.depth <= 0 && search_limits.nodes <= 0;
}

} // namespace

void check_limits() {
    if (tick_count() - search_time.start_time >= search_time.hard_limit)
        stop_flag = 1;
    if (search_limits.nodes > 0 && node_count >= static_cast<std::uint64_t>(search_limits.nodes))
        stop_flag = 1;
    check_input();
}

void check_input() {
    next_forced_check = node_count + FORCED_CHECK_INTERVAL;
    poll_input();
    // If this go command waited in the pending-line queue, a quit behind it was read before the
    // search began, so the poll does not see it.
    if (is_endless() && quit_is_pending())
        stop_flag = 1;
}

} // namespace brindlemoth
