#include "platform/large_memory.h"

#include <cstdint>
#include <sys/mman.h>

namespace brindlemoth {

namespace {

// A mapping can be backed by large pages only where it covers whole ones.
constexpr std::size_t LARGE_PAGE = std::size_t{2} << 20;

} // namespace

void* allocate_large(std::size_t bytes) {
    // One page more than asked for has an aligned block in it; what lies around it goes back.
    const std::size_t reserved = bytes + LARGE_PAGE;
    void* const mapping =
        mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        return nullptr;
    char* const begin = static_cast<char*>(mapping);
    const std::size_t lead =
        (LARGE_PAGE - reinterpret_cast<std::uintptr_t>(begin) % LARGE_PAGE) % LARGE_PAGE;
    if (lead > 0)
        munmap(begin, lead);
    char* const block = begin + lead;
    munmap(block + bytes, reserved - lead - bytes);
#ifdef MADV_HUGEPAGE
    madvise(block, bytes, MADV_HUGEPAGE); // a wish: small pages serve as well
#endif
    return block;
}

void release_large(void* block, std::size_t bytes) {
    if (block != nullptr)
        munmap(block, bytes);
}

} // namespace brindlemoth
