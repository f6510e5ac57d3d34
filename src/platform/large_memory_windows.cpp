#include "platform/large_memory.h"

#include <cstdlib>

namespace brindlemoth {

// Large pages need a privilege that ordinary users do not have.
void* allocate_large(std::size_t bytes) {
    return std::calloc(bytes, 1);
}

void release_large(void* block, std::size_t) {
    std::free(block);
}

} // namespace brindlemoth
