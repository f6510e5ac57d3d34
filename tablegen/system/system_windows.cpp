#include "system/system.h"

#include <cerrno>
#include <io.h>
#include <windows.h>

namespace brindlemoth::tablegen {

bool sync_to_disk(std::FILE* file) {
    return std::fflush(file) == 0 && _commit(_fileno(file)) == 0;
}

bool replace_file(const char* from, const char* to) {
    if (MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0)
        return true;
    errno = EACCES;
    return false;
}

// The library takes plain text for Latin letters; the program's is UTF-8.
std::filesystem::path path_of(const std::string& name) {
    return std::u8string(name.begin(), name.end());
}

unsigned long process_id() {
    return GetCurrentProcessId();
}

void prefer_large_pages(void*, std::size_t) {}

bool output_is_terminal() {
    return _isatty(_fileno(stdout)) != 0;
}

} // namespace brindlemoth::tablegen
