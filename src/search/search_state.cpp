#include "search/search_state.h"

#include "search/limit_check.h"
#include "search/transposition.h"

#include <cstring>

namespace brindlemoth {

namespace {

template <typename Table> void clear(Table& table) {
    std::memset(static_cast<void*>(&table), 0, sizeof table);
}

template <typename Table> void halve(Table& table) {
    std::int16_t* const cells = reinterpret_cast<std::int16_t*>(&table);
    for (std::size_t i = 0; i < sizeof table / sizeof *cells; ++i)
        cells[i] = static_cast<std::int16_t>(cells[i] / 2);
}

} // namespace

void begin_search(const SearchLimits& limits, int side) {
    node_count = 0;
    next_forced_check = FORCED_CHECK_INTERVAL;
    stop_flag = 0;
    sel_depth = 0;
    iteration_depth = 0;
    root_excluded_count = 0;
    clear(root_lines);
    search_limits = limits;
    time_budget(search_time, limits, side);
    ++tt_generation;
    clear(killers);
    halve(butterfly_history);
    halve(continuation_history);
}

void clear_search_memory() {
    tt_clear();
    tt_generation = 0;
    clear(killers);
    clear(countermoves);
    clear(butterfly_history);
    clear(continuation_history);
}

} // namespace brindlemoth
