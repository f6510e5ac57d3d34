// Read-only files: opening, size, and a mapping of the whole file into memory. File names are
// passed to the system unchanged. Only the endgame tables use this.
#pragma once

#include <cstdint>

namespace brindlemoth {

using FileHandle = std::intptr_t;
constexpr FileHandle INVALID_FILE = -1;

// The system's object for a mapping. It stays valid after the file is closed, and is closed after
// the view was unmapped.
using MappingHandle = std::uintptr_t;

// NO_MAPPING: the mapping object could not be made. NO_VIEW: it could not be mapped into memory.
enum class MapResult { MAPPED, NO_MAPPING, NO_VIEW };

// Separates a directory from a file name in a path.
extern const char path_separator;

// Opens an existing file for reading at random offsets. Returns INVALID_FILE if there is no regular
// file of that name (a directory or a pipe is none) or reading it is not permitted.
FileHandle open_file(const char* name);

// Sets `size` to the size in bytes of an open file. Returns false on failure.
bool file_size(FileHandle file, std::uint64_t& size);

// Returns false on failure.
bool close_file(FileHandle file);

// Maps the whole file for reading and sets `size` to its bytes. `file` may be closed afterwards. On
// failure returns which of the two steps failed; the values of the output parameters are undefined.
MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size);

// Release a mapping: first the view, then the mapping object. Both return false on failure.
bool unmap_view(const std::uint8_t* view, MappingHandle mapping);
bool close_mapping(MappingHandle mapping);

// The system's error number of the last operation above that failed.
unsigned long last_file_error();

} // namespace brindlemoth
