// Large blocks of zeroed memory for random access, such as a hash table.
#pragma once

#include <cstddef>

namespace brindlemoth {

// Allocates a zero-filled block, on large pages where the system offers them. Returns nullptr if
// there is not enough memory. The caller releases it by release_large().
void* allocate_large(std::size_t bytes);

// Releases a block of allocate_large(), which was called with the same number of bytes. Does
// nothing if `block` is nullptr.
void release_large(void* block, std::size_t bytes);

} // namespace brindlemoth
