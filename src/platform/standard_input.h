// Standard input as bytes: whether a read would return at once, and the read itself. There is no
// buffered stream in between, so input_waiting() knows of everything that is unread. Only
// input/line_reader.cpp calls these functions, and nothing else may read standard input.
#pragma once

namespace brindlemoth {

// Whether read_input() would return at once, because input has arrived or has ended. Always true
// for a file. Never waits.
bool input_waiting();

// Waits until input has arrived and reads at most `size` bytes of it into the buffer. Returns the
// number of bytes, or 0 at the end of input or on a read error. Requires size > 0.
int read_input(char* buffer, int size);

} // namespace brindlemoth
