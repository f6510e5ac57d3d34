// Input during a search. poll_input() acts at once on stop, isready and quit, and leaves every
// other line to the command loop. The search calls it and reads stop_flag; nothing here knows the
// search.
#pragma once

#include <cstdint>

namespace brindlemoth {

// The room that take_pending_line() needs, with the terminator.
constexpr int PENDING_LINE_SIZE = 1024;

// 1 when the running search is to end. Cleared at the start of every search.
extern std::uint8_t stop_flag;

// Handles all whole lines that have arrived; returns at once if there are none. The end of input
// only ends the poll.
// - stop and quit set stop_flag, isready is answered, and blank lines are dropped.
// - Other lines, and quit, go to the pending-line queue of 16 lines. A line of PENDING_LINE_SIZE
//   characters or more goes there in pieces.
// - Once stop_flag is set or the queue is full, these lines stay in the input buffer instead, where
//   read_line() finds them whole. As long as any is left there, later lines stay behind it. Stop,
//   isready and quit are still acted on. When the input buffer (16 KiB) is full, nothing more is
//   read.
void poll_input();

// Whether poll_input() has read a quit, which the command loop has yet to reach.
bool quit_is_pending();

// Takes the oldest line of the queue, without line feed and carriage returns. Returns false if the
// queue is empty: then read_line() has the next line.
bool take_pending_line(char* line);

} // namespace brindlemoth
