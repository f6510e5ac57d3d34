// Standard output without buffering. The program prints all its replies through these functions.
#pragma once

#include <cstddef>

namespace brindlemoth {

constexpr int MAX_PRINT = 2048; // the longest text of one print(), with the terminator

// Prints like printf(), in one write. A text of more than MAX_PRINT - 1 characters is cut off
// there.
[[gnu::format(printf, 1, 2)]] void print(const char* format, ...);

// Writes `size` bytes. Waits while the reader of the output does not take them. If the output was
// closed, the rest is dropped.
void write_output(const char* text, std::size_t size);

} // namespace brindlemoth
