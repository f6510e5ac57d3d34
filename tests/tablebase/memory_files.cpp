#include "tablebase/memory_files.h"

#include "platform/file_mapping.h"

#include <algorithm>
#include <map>
#include <memory>
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
MemoryFileCounts counts{};
FailingOperation failing = FailingOperation::NONE;

} // namespace

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

MemoryFileCounts memory_file_counts() {
    return counts;
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
    ++counts.open_files;
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
    --counts.open_files;
    return true;
}

MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size) {
    if (failing == FailingOperation::MAPPING)
        return MapResult::NO_MAPPING;
    if (failing == FailingOperation::VIEW)
        return MapResult::NO_VIEW;
    const MemoryFile& content = *handles[static_cast<std::size_t>(file)];
    ++counts.mappings;
    ++counts.views;
    ++counts.maps_made;
    mapping = content.size;
    view = content.bytes.get();
    size = content.size;
    return MapResult::MAPPED;
}

bool unmap_view(const std::uint8_t*, MappingHandle) {
    --counts.views;
    return failing != FailingOperation::UNMAP;
}

bool close_mapping(MappingHandle) {
    --counts.mappings;
    return failing != FailingOperation::CLOSE_MAPPING;
}

unsigned long last_file_error() {
    return MEMORY_FILE_ERROR;
}

} // namespace brindlemoth
