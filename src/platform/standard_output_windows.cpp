#include "platform/standard_output.h"

#include <cstdio>

namespace brindlemoth {

// The C library's stream in text mode turns each line feed into the line end of Windows.
void write_output(const char* text, std::size_t size) {
    std::fwrite(text, 1, size, stdout);
    std::fflush(stdout);
}

} // namespace brindlemoth
