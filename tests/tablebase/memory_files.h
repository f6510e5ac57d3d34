// Table files in memory instead of on disk. A program that links this has no other files. Every
// file is a heap block of exactly its length, so AddressSanitizer reports a read after its end.
// Each operation of the system can be made to fail.
#pragma once

#include <cstdint>
#include <string>

namespace brindlemoth {

// The directory of all files of this program.
constexpr const char* MEMORY_DIRECTORY = "memory";

// Puts a file there, or replaces it. Requires that it is not mapped.
void put_memory_file(const std::string& name, const std::string& content);
void remove_memory_files();
// The bytes of a file, to be changed in place.
std::uint8_t* memory_file_bytes(const std::string& name);

// Open files, views and mappings together.
int memory_file_uses();

// Makes the tables of 3 and 4 men the only files.
void put_made_tables();

// The operation that fails from now on.
enum class FailingOperation { NONE, SIZE, MAPPING, VIEW, UNMAP, CLOSE_MAPPING };
void make_fail(FailingOperation operation);

// How many of the engine's allocations still succeed; negative: all of them.
extern int allocations_left;

// The error number of a failed operation.
constexpr unsigned long MEMORY_FILE_ERROR = 1234;

} // namespace brindlemoth
