#include "system/system.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

namespace brindlemoth::tablegen {

bool sync_to_disk(std::FILE* file) {
    return std::fflush(file) == 0 && fsync(fileno(file)) == 0;
}

bool replace_file(const char* from, const char* to) {
    if (std::rename(from, to) != 0)
        return false;
    const std::filesystem::path directory = std::filesystem::path(to).parent_path();
    const int opened = open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY);
    if (opened < 0)
        return false;
    // Some file systems cannot sync a directory and say so in this way.
    const bool synced = fsync(opened) == 0 || errno == EINVAL;
    const int error = errno;
    close(opened);
    errno = error;
    return synced;
}

std::filesystem::path path_of(const std::string& name) {
    return name;
}

unsigned long process_id() {
    return static_cast<unsigned long>(getpid());
}

void prefer_large_pages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
    constexpr std::size_t LARGE_PAGE = 1 << 21;
    if (std::align(LARGE_PAGE, LARGE_PAGE, memory, bytes) != nullptr)
        madvise(memory, bytes / LARGE_PAGE * LARGE_PAGE, MADV_HUGEPAGE);
#endif
}

bool output_is_terminal() {
    return isatty(STDOUT_FILENO) != 0;
}

} // namespace brindlemoth::tablegen
