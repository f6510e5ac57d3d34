// Opening a file whose name comes from the user, so that it may name anything. The book loader
// calls this.
#pragma once

#include <cstdint>
#include <cstdio>

namespace brindlemoth {

// Opens a regular file for binary reading. Directories, pipes and devices are refused without
// waiting for another process. Returns nullptr on failure. The caller closes the stream.
std::FILE* open_regular_file(const char* path);

// Returns the size of the file in bytes, or -1 on failure.
std::int64_t regular_file_size(std::FILE* file);

} // namespace brindlemoth
