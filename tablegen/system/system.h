// The operating system's functions that the generator needs, with one source for each kind of
// system.
#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>

namespace brindlemoth::tablegen {

// Forces what was written to the stream onto the disk. False on failure, with errno set.
bool sync_to_disk(std::FILE* file);

// Gives a file another name in the same directory, in place of a file that may have it, and forces
// the new name onto the disk. False on failure, errno set.
bool replace_file(const char* from, const char* to);

// The path of a name that the user typed, which is UTF-8 on Windows. std::fopen() takes the name.
std::filesystem::path path_of(const std::string& name);

// The number of this process, which no other running process has.
unsigned long process_id();

// Asks for large pages under memory that nothing has been written to yet, which makes reading at
// random places faster. A system without large pages ignores it.
void prefer_large_pages(void* memory, std::size_t bytes);

// Whether standard output is a terminal.
bool output_is_terminal();

} // namespace brindlemoth::tablegen
