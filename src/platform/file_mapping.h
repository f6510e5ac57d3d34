// Files that are only read: opening, size, and a read-only mapping of the whole file at once.
// Names are taken byte for byte. The endgame tables are the only user.
#pragma once

#include <cstdint>

namespace brindlemoth {

using FileHandle = std::intptr_t;
constexpr FileHandle INVALID_FILE = -1;

// The system's record of a mapping; it outlives the file handle and dies after the view.
using MappingHandle = std::uintptr_t;

enum class MapResult { MAPPED, NO_MAPPING, NO_VIEW };

// What separates a directory from a file name.
extern const char path_separator;

// Opens an existing file for reading at random places. Returns INVALID_FILE for whatever cannot
// be read as a file: missing, forbidden, a directory, a pipe.
FileHandle open_file(const char* name);

// The size in bytes of an open file. False on failure.
bool file_size(FileHandle file, std::uint64_t& size);

bool close_file(FileHandle file);

// Maps the whole file for reading. `file` may be closed afterwards. On failure says which of the
// two steps failed, and the results mean nothing.
MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size);

// The two halves of giving a mapping back, in this order. False on failure.
bool unmap_view(const std::uint8_t* view, MappingHandle mapping);
bool close_mapping(MappingHandle mapping);

// The error number of the operation above that failed last.
unsigned long last_file_error();

} // namespace brindlemoth
