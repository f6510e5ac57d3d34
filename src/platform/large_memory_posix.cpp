#include "platform/large_memory.h"

#include <cstdint>
#include <sys/mman.h>

namespace brindlemoth {

namespace {

// The size and alignment of a large page: 2 MiB on x86-64.
constexpr std::size_t LARGE_PAGE = std::size_t{2} << 20;

} // namespace

void* allocate_large(std::size_t bytes) {
    // Reserve one page more than requested, so that the reservation contains an aligned block. Then
    // release what lies before and behind that block.
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
    madvise(block, bytes, MADV_HUGEPAGE); // only a hint: small pages work too
#endif
    return block;
}

void release_large(void* block, std::size_t bytes) {
    if (block != nullptr)
        munmap(block, bytes);
}

} // namespace brindlemoth
