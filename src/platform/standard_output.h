// Standard output: formatted text that leaves at once and in one piece. Everything that the
// program answers goes through print(); no buffered stream stands in between.
#pragma once

#include <cstddef>

namespace brindlemoth {

constexpr int MAX_PRINT = 2048; // characters of one print(), with a terminator

// Prints like printf, in one write. What is longer than MAX_PRINT - 1 characters is cut off.
[[gnu::format(printf, 1, 2)]] void print(const char* format, ...);

// Writes the text, waiting while its reader takes nothing. What can no longer be written at all,
// because the output was closed, is dropped.
void write_output(const char* text, std::size_t size);

} // namespace brindlemoth
