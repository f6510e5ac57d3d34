#include "tablebase/memory_files.h"

#include "platform/file_mapping.h"
#include "support/support.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <map>
#include <new>
#include <vector>

namespace brindlemoth {

const char path_separator = '/';

namespace {

std::map<std::string, std::vector<std::uint8_t>> files;
std::vector<const std::vector<std::uint8_t>*> handles; // null when closed
int uses = 0;
FailingOperation failing = FailingOperation::NONE;

} // namespace

int allocations_left = -1;

void put_memory_file(const std::string& name, const std::string& content) {
    files[name] = std::vector<std::uint8_t>(content.begin(), content.end());
}

void remove_memory_files() {
    files.clear();
}

std::uint8_t* memory_file_bytes(const std::string& name) {
    return files.at(name).data();
}

int memory_file_uses() {
    return uses;
}

void put_made_tables() {
    remove_memory_files();
    const std::vector<std::string> all = all_signatures();
    for (std::size_t i = 0; i < 35; ++i) {
        for (const char* extension : {".rtbw", ".rtbz"})
            put_memory_file(all[i] + extension,
                            read_file(tables_directory() + "/" + all[i] + extension));
    }
}

void make_fail(FailingOperation operation) {
    failing = operation;
}

FileHandle open_file(const char* name) {
    const std::string directory = std::string(MEMORY_DIRECTORY) + path_separator;
    const std::string path = name;
    if (path.compare(0, directory.size(), directory) != 0)
        return INVALID_FILE;
    const auto file = files.find(path.substr(directory.size()));
    if (file == files.end())
        return INVALID_FILE;
    ++uses;
    handles.push_back(&file->second);
    return static_cast<FileHandle>(handles.size() - 1);
}

bool file_size(FileHandle file, std::uint64_t& size) {
    size = handles[static_cast<std::size_t>(file)]->size();
    return failing != FailingOperation::SIZE;
}

bool close_file(FileHandle file) {
    handles[static_cast<std::size_t>(file)] = nullptr;
    --uses;
    return true;
}

MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size) {
    if (failing == FailingOperation::MAPPING)
        return MapResult::NO_MAPPING;
    if (failing == FailingOperation::VIEW)
        return MapResult::NO_VIEW;
    const std::vector<std::uint8_t>& content = *handles[static_cast<std::size_t>(file)];
    uses += 2;
    mapping = content.size();
    view = content.data();
    size = content.size();
    return MapResult::MAPPED;
}

bool unmap_view(const std::uint8_t*, MappingHandle) {
    --uses;
    return failing != FailingOperation::UNMAP;
}

bool close_mapping(MappingHandle) {
    --uses;
    return failing != FailingOperation::CLOSE_MAPPING;
}

unsigned long last_file_error() {
    return MEMORY_FILE_ERROR;
}

} // namespace brindlemoth

static bool memory_is_left() {
    if (brindlemoth::allocations_left == 0)
        return false;
    brindlemoth::allocations_left -= brindlemoth::allocations_left > 0 ? 1 : 0;
    return true;
}

// The engine asks for memory by these forms alone, the tests and their library by the others.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return memory_is_left() ? operator new(size) : nullptr;
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return memory_is_left() ? operator new[](size) : nullptr;
}
