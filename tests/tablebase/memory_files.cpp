#include "tablebase/memory_files.h"

#include "platform/file_mapping.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <vector>

namespace brindlemoth {

const char path_separator = '/';

namespace {

struct MemoryFile {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::uint64_t size;
};

std::map<std::string, MemoryFile> files;
std::vector<const MemoryFile*> handles; // null when closed
int open_files = 0;
int views = 0;
int mappings = 0;
FailingOperation failing = FailingOperation::NONE;

} // namespace

int allocations_left = -1;

void put_memory_file(const std::string& name, const std::string& content) {
    MemoryFile file{std::make_unique<std::uint8_t[]>(content.size()), content.size()};
    std::copy(content.begin(), content.end(), file.bytes.get());
    files[name] = std::move(file);
}

void remove_memory_files() {
    files.clear();
}

std::uint8_t* memory_file_bytes(const std::string& name) {
    return files.at(name).bytes.get();
}

int memory_file_uses() {
    return std::abs(open_files) + std::abs(views) + std::abs(mappings);
}

void put_genuine_tables() {
    remove_memory_files();
    const std::vector<std::string> all = all_signatures();
    for (std::size_t i = 0; i < 35; ++i) {
        for (const char* extension : {".rtbw", ".rtbz"})
            put_memory_file(all[i] + extension,
                            read_file(syzygy_directory() + "/" + all[i] + extension));
    }
}

std::string constant_table(bool split, const std::string& piece_header, std::uint8_t value,
                           std::uint8_t second_value, int file_positions) {
    std::string file("\x71\xE8\x23\x5D");
    file += split ? '\1' : '\0';
    for (int t = 0; t < file_positions; ++t)
        file += piece_header;
    file.resize(file.size() + file.size() % 2);
    for (int t = 0; t < file_positions; ++t) {
        file += {'\x80', static_cast<char>(value)};
        if (split)
            file += {'\x80', static_cast<char>(second_value)};
    }
    file.resize(80);
    return file;
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
    ++open_files;
    const auto free_handle = std::find(handles.begin(), handles.end(), nullptr);
    if (free_handle != handles.end()) {
        *free_handle = &file->second;
        return free_handle - handles.begin();
    }
    handles.push_back(&file->second);
    return static_cast<FileHandle>(handles.size() - 1);
}

bool file_size(FileHandle file, std::uint64_t& size) {
    size = handles[static_cast<std::size_t>(file)]->size;
    return failing != FailingOperation::SIZE;
}

bool close_file(FileHandle file) {
    handles[static_cast<std::size_t>(file)] = nullptr;
    --open_files;
    return true;
}

MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size) {
    if (failing == FailingOperation::MAPPING)
        return MapResult::NO_MAPPING;
    if (failing == FailingOperation::VIEW)
        return MapResult::NO_VIEW;
    const MemoryFile& content = *handles[static_cast<std::size_t>(file)];
    ++mappings;
    ++views;
    mapping = content.size;
    view = content.bytes.get();
    size = content.size;
    return MapResult::MAPPED;
}

bool unmap_view(const std::uint8_t*, MappingHandle) {
    --views;
    return failing != FailingOperation::UNMAP;
}

bool close_mapping(MappingHandle) {
    --mappings;
    return failing != FailingOperation::CLOSE_MAPPING;
}

unsigned long last_file_error() {
    return MEMORY_FILE_ERROR;
}

} // namespace brindlemoth

// The engine asks for memory by these forms alone, the tests and their library by the others.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (brindlemoth::allocations_left == 0)
        return nullptr;
    brindlemoth::allocations_left -= brindlemoth::allocations_left > 0 ? 1 : 0;
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (brindlemoth::allocations_left == 0)
        return nullptr;
    brindlemoth::allocations_left -= brindlemoth::allocations_left > 0 ? 1 : 0;
    return operator new[](size);
}
