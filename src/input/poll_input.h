// What may be read while a search runs. poll_input() acts at once on stop, isready and quit and
// parks every other line in a ring for the command loop. A leaf: it knows nothing of the search,
// which calls it and reads stop_flag.
#pragma once

#include <cstdint>

namespace brindlemoth {

constexpr int PENDING_CAPACITY = 16;
constexpr int PENDING_LINE_SIZE = 1024; // with the terminator

// Lines that arrived during a search, oldest first, trimmed.
extern char pending_lines[PENDING_CAPACITY][PENDING_LINE_SIZE];
extern int pending_count;
extern int pending_head; // slot of the oldest line

// 1 when the running search is to end. Cleared at the start of every search.
extern std::uint8_t stop_flag;

// Takes in all finished lines that are waiting; returns at once when there are none. Behind a full
// ring the other lines stay unread, in their order. The end of input only ends the poll.
void poll_input();

// Whether a quit waits among the pending lines.
bool quit_is_pending();

// Takes the oldest pending line, if there is one. `line` has room for PENDING_LINE_SIZE.
bool take_pending_line(char* line);

} // namespace brindlemoth
