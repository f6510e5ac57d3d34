// Lines of standard input, read through a buffer of the program's own. Because the buffer shows
// whether a whole line has arrived, a search never waits for the rest of an unfinished one. Only
// the command loop and poll_input() read through this.
#pragma once

namespace brindlemoth {

// read_line() and poll_line() take the oldest line out of the buffer and write it to `line`, with a
// terminator and without its line feed and the carriage returns before it.
// - A line of `capacity` - 1 characters or more is returned in pieces of that length.
// - A line that contains a NUL byte ends there.
// - The last line of the input needs no line feed.

// Waits for a line. Returns false at the end of input.
bool read_line(char* line, int capacity);

// Never waits. Returns false when no whole line and no full piece of one has arrived.
bool poll_line(char* line, int capacity);

// Reads what has arrived, as far as the buffer has room, without waiting. Then calls act() for each
// whole line in the buffer that it was not called for before, the oldest first. act() is not called
// for lines of 64 bytes or more, the line feed included: no word is that long. Lines for which
// act() returns true are removed; everything else is kept for read_line().
void scan_lines(bool (*act)(const char* line));

// Whether the buffer holds anything, an unfinished line included, that scan_lines() kept and
// read_line() has not taken yet.
bool has_kept_lines();

} // namespace brindlemoth
