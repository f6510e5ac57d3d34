// Lines of standard input, with a buffer of the program's own, so that a finished line is seen
// wherever it stands and an unfinished one is never waited for. The command loop and poll_input()
// read through this and nothing else does.
#pragma once

namespace brindlemoth {

// Both write a line without its line feed or carriage returns to `line`, with a terminator. A line
// of `capacity` - 1 characters or more arrives in pieces of that length, and one that holds a NUL
// byte ends there. The last line of the input needs no line feed.

// Waits for a line. False at the end of input.
bool read_line(char* line, int capacity);

// Takes a line that is there in full, without waiting for more. False when there is none.
bool poll_line(char* line, int capacity);

// Shows act() every line that is there in full and was not shown before, the oldest first, and
// takes out those for which it says true; the others stay for the two above. Reads what has
// arrived, without waiting, as far as the buffer has room. Lines too long to be a word are left
// out.
void sift_lines(bool (*act)(const char* line));

} // namespace brindlemoth
