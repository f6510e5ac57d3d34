#include "platform/file_mapping.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <limits>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brindlemoth {

const char path_separator = '/';

FileHandle open_file(const char* name) {
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    const int file = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return INVALID_FILE;
    struct stat status;
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(file);
        return INVALID_FILE;
    }
    return file;
}

bool file_size(FileHandle file, std::uint64_t& size) {
    struct stat status;
    if (fstat(static_cast<int>(file), &status) != 0)
        return false;
    size = static_cast<std::uint64_t>(status.st_size);
    return true;
}

bool close_file(FileHandle file) {
    return close(static_cast<int>(file)) == 0;
}

// POSIX has no mapping object. The mapping handle holds the length instead, which munmap needs.
MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size) {
    if (!file_size(file, size))
        return MapResult::NO_MAPPING;
    if (size > std::numeric_limits<std::size_t>::max()) {
        errno = EFBIG;
        return MapResult::NO_VIEW;
    }
    void* const address = mmap(nullptr, size, PROT_READ, MAP_SHARED, static_cast<int>(file), 0);
    if (address == MAP_FAILED)
        return MapResult::NO_VIEW;
#ifndef __wasi__                         // there mmap is emulated by reading the file
    madvise(address, size, MADV_RANDOM); // advice only: a refusal changes nothing
#endif
    mapping = size;
    view = static_cast<const std::uint8_t*>(address);
    return MapResult::MAPPED;
}

bool unmap_view(const std::uint8_t* view, MappingHandle mapping) {
    return munmap(const_cast<std::uint8_t*>(view), mapping) == 0;
}

bool close_mapping(MappingHandle) {
    return true;
}

unsigned long last_file_error() {
    return static_cast<unsigned long>(errno);
}

} // namespace brindlemoth
