#include "platform/large_memory.h"

#include <cstdlib>
#include <cstring>

namespace brindlemoth {

namespace {

// WASI has no large pages; a block begins on a cache line, which its entries then do not straddle.
constexpr std::size_t CACHE_LINE = 64;

} // namespace

void* allocate_large(std::size_t bytes) {
    const std::size_t whole_lines = (bytes + CACHE_LINE - 1) / CACHE_LINE * CACHE_LINE;
    void* const block = std::aligned_alloc(CACHE_LINE, whole_lines);
    if (block != nullptr)
        std::memset(block, 0, bytes);
    return block;
}

void release_large(void* block, std::size_t) {
    std::free(block);
}

} // namespace brindlemoth
