// Large blocks of zeroed memory that are read at random, as a hash table is.
#pragma once

#include <cstddef>

namespace brindlemoth {

// A zero-filled block, on large pages where the system has them to give; nullptr when there is not
// that much memory.
void* allocate_large(std::size_t bytes);

// Gives back a block and its length; nullptr is no block.
void release_large(void* block, std::size_t bytes);

} // namespace brindlemoth
