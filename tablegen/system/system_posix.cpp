#include "system/system.h"

#include <unistd.h>

namespace brindlemoth::tablegen {

bool sync_to_disk(std::FILE* file) {
    return std::fflush(file) == 0 && fsync(fileno(file)) == 0;
}

bool replace_file(const char* from, const char* to) {
    return std::rename(from, to) == 0;
}

std::filesystem::path path_of(const std::string& name) {
    return name;
}

unsigned long process_id() {
    return static_cast<unsigned long>(getpid());
}

bool output_is_terminal() {
    return isatty(STDOUT_FILENO) != 0;
}

} // namespace brindlemoth::tablegen
