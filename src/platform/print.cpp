#include "platform/standard_output.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace brindlemoth {

void print(const char* format, ...) {
    char text[MAX_PRINT];
    std::va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    write_output(text, static_cast<std::size_t>(std::clamp(length, 0, MAX_PRINT - 1)));
}

} // namespace brindlemoth
