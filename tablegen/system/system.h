// What the generator asks of the operating system. One source answers for each kind of system.
#pragma once

#include <cstdio>

namespace brindlemoth::tablegen {

// Forces what was written to the stream onto the disk. False on failure, with errno set.
bool sync_to_disk(std::FILE* file);

// Gives a file another name, in place of a file that may have it. False on failure, errno set.
bool replace_file(const char* from, const char* to);

// The number of this process, which no other running process has.
unsigned long process_id();

// Whether standard output is a terminal that a person looks at.
bool output_is_terminal();

} // namespace brindlemoth::tablegen
