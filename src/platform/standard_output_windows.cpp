#include "platform/standard_output.h"

#include <cstdio>

namespace brindlemoth {

// Through the stream of the library, which ends lines as the system does.
void write_output(const char* text, std::size_t size) {
    std::fwrite(text, 1, size, stdout);
    std::fflush(stdout);
}

} // namespace brindlemoth
