#include "platform/regular_file.h"

#include <io.h>
#include <windows.h>

namespace brindlemoth {

std::FILE* open_regular_file(const char* path) {
    std::FILE* const file = std::fopen(path, "rb");
    if (file == nullptr)
        return nullptr;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        std::fclose(file);
        return nullptr;
    }
    return file;
}

// Not by fseek() and ftell(): on Windows a long has 32 bits.
std::int64_t regular_file_size(std::FILE* file) {
    return _filelengthi64(_fileno(file));
}

} // namespace brindlemoth
