#include "platform/file_mapping.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brindlemoth {

const char path_separator = '\\';

static HANDLE to_handle(FileHandle file) {
    return reinterpret_cast<HANDLE>(file);
}

FileHandle open_file(const char* name) {
    const HANDLE file = CreateFileA(name, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return INVALID_FILE;
    if (GetFileType(file) != FILE_TYPE_DISK) {
        CloseHandle(file);
        return INVALID_FILE;
    }
    return reinterpret_cast<FileHandle>(file);
}

bool file_size(FileHandle file, std::uint64_t& size) {
    LARGE_INTEGER bytes;
    if (!GetFileSizeEx(to_handle(file), &bytes))
        return false;
    size = static_cast<std::uint64_t>(bytes.QuadPart);
    return true;
}

bool close_file(FileHandle file) {
    return CloseHandle(to_handle(file)) != 0;
}

MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size) {
    DWORD high = 0;
    const DWORD low = GetFileSize(to_handle(file), &high);
    if (low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR)
        return MapResult::NO_MAPPING;
    size = (static_cast<std::uint64_t>(high) << 32) | low;
    const HANDLE object =
        CreateFileMappingA(to_handle(file), nullptr, PAGE_READONLY, high, low, nullptr);
    if (object == nullptr)
        return MapResult::NO_MAPPING;
    const void* const address = MapViewOfFile(object, FILE_MAP_READ, 0, 0, 0);
    if (address == nullptr)
        return MapResult::NO_VIEW;
    mapping = reinterpret_cast<MappingHandle>(object);
    view = static_cast<const std::uint8_t*>(address);
    return MapResult::MAPPED;
}

bool unmap_view(const std::uint8_t* view, MappingHandle) {
    return UnmapViewOfFile(view) != 0;
}

bool close_mapping(MappingHandle mapping) {
    return CloseHandle(reinterpret_cast<HANDLE>(mapping)) != 0;
}

unsigned long last_file_error() {
    return GetLastError();
}

} // namespace brindlemoth
