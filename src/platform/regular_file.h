// Opening a file that a user named, when the name may stand for anything. The book loader calls it.
#pragma once

#include <cstdio>

namespace brindlemoth {

// Opens the file for binary reading if it is a regular file; directories, pipes and devices are
// refused without waiting for anyone at their other end. Returns nullptr on failure; otherwise the
// caller closes the stream.
std::FILE* open_regular_file(const char* path);

} // namespace brindlemoth
