// Standard input below the level of lines: whether a read would return now, and the read itself.
// The command loop and its polling are the only readers; nothing else may read standard input,
// and no buffered stream stands in between, so that input_waiting() sees all that is unread.
#pragma once

namespace brindlemoth {

// Whether read_input() would return at once: input has arrived, or input has ended. A file always
// answers yes. Never waits.
bool input_waiting();

// Reads what is there into the buffer, at most `size` bytes, waiting while nothing is. Returns the
// number of bytes, 0 at the end of input or when it cannot be read. Requires size > 0.
int read_input(char* buffer, int size);

} // namespace brindlemoth
