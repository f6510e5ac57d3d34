#include "tablebase/allocation_hooks.h"

#include <cstdlib>
#include <new>

namespace brindlemoth {

int allocations_left = -1;
int live_allocations = 0;

} // namespace brindlemoth

using brindlemoth::allocations_left;
using brindlemoth::live_allocations;

// The engine asks for memory by this form alone; the tests and their library by the others.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (allocations_left == 0)
        return nullptr;
    if (allocations_left > 0)
        --allocations_left;
    ++live_allocations;
    return std::malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void* operator new(std::size_t size) {
    ++live_allocations;
    if (void* const block = std::malloc(size))
        return block;
    std::abort();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* block) noexcept {
    if (block != nullptr)
        --live_allocations;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
void operator delete[](void* block) noexcept {
    operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    operator delete(block);
}
