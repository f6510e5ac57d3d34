// Opening a file that a user named, when the name may stand for anything. The book loader calls it.
#pragma once

#include <cstdint>
#include <cstdio>

namespace brindlemoth {

// Opens the file for binary reading if it is a regular file; directories, pipes and devices are
// refused without waiting for anyone at their other end. Returns nullptr on failure; otherwise the
// caller closes the stream.
std::FILE* open_regular_file(const char* path);

// Its size in bytes, or -1 on failure.
std::int64_t regular_file_size(std::FILE* file);

} // namespace brindlemoth
