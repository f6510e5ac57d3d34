// What the generator asks of the operating system. One source answers for each kind of system.
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

// What a name that the user typed stands for, wherever more than opening a file is asked of it.
std::filesystem::path path_of(const std::string& name);

// The number of this process, which no other running process has.
unsigned long process_id();

// Asks for large pages under memory that nothing has been written to yet: what is read all over it
// then finds its pages faster. A system that has none ignores it.
void prefer_large_pages(void* memory, std::size_t bytes);

// Whether standard output is a terminal that a person looks at.
bool output_is_terminal();

} // namespace brindlemoth::tablegen
