#include "platform/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brindlemoth {

std::FILE* open_regular_file(const char* path) {
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    struct stat status {};
    std::FILE* file = nullptr;
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        file = fdopen(descriptor, "rb");
    if (file == nullptr)
        close(descriptor);
    return file;
}

std::int64_t regular_file_size(std::FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 ? std::int64_t{status.st_size} : -1;
}

} // namespace brindlemoth
