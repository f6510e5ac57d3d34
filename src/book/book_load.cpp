// Reading a book file. The user may name any file. If it is not a book, or changes while it is
// read, the engine has no book afterwards.
#include "book/book.h"
#include "platform/regular_file.h"

#include <cstdlib>
#include <ctime>
#include <limits>
#include <new>

namespace brindlemoth {

BookEntry* book_entries = nullptr;
int book_entry_count = 0;
bool own_book = false;

namespace {

// The bytes of a record and of its fields. All numbers are big-endian. The learn field is not used.
constexpr int KEY_SIZE = 8;
constexpr int MOVE_SIZE = 2;
constexpr int WEIGHT_SIZE = 2;
constexpr int LEARN_SIZE = 4;
constexpr int RECORD_SIZE = KEY_SIZE + MOVE_SIZE + WEIGHT_SIZE + LEARN_SIZE;

std::uint64_t read_big_endian(const unsigned char* bytes, int size) {
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

BookEntry read_record(const unsigned char* record) {
    const unsigned char* const move = record + KEY_SIZE;
    const unsigned char* const weight = move + MOVE_SIZE;
    return {read_big_endian(record, KEY_SIZE),
            static_cast<std::uint16_t>(read_big_endian(move, MOVE_SIZE)),
            static_cast<std::uint16_t>(read_big_endian(weight, WEIGHT_SIZE))};
}

// Returns the size of the file in bytes if it can be that of a book: a whole number of records, at
// least one, and within 32 signed bits. Otherwise returns 0.
int find_book_size(std::FILE* file) {
    const std::int64_t size = regular_file_size(file);
    const bool is_book =
        size >= RECORD_SIZE && size % RECORD_SIZE == 0 && size <= std::numeric_limits<int>::max();
    return is_book ? static_cast<int>(size) : 0;
}

// Reads the whole file into a buffer, which the caller deletes, and sets `size` to its bytes.
// Returns nullptr if the file is not a book, does not fit into memory, or gives fewer bytes than
// its size.
unsigned char* read_book_file(const char* path, int& size) {
    std::FILE* const file = open_regular_file(path);
    if (file == nullptr)
        return nullptr;
    unsigned char* buffer = nullptr;
    size = find_book_size(file);
    if (size > 0) {
        const auto wanted = static_cast<std::size_t>(size);
        buffer = new (std::nothrow) unsigned char[wanted];
        if (buffer != nullptr && std::fread(buffer, 1, wanted, file) != wanted) {
            delete[] buffer;
            buffer = nullptr;
        }
    }
    std::fclose(file);
    return buffer;
}

} // namespace

bool book_load(const char* path) {
    delete[] book_entries;
    book_entries = nullptr;
    book_entry_count = 0;
    own_book = false;

    int size = 0;
    unsigned char* const buffer = read_book_file(path, size);
    if (buffer == nullptr)
        return false;
    const int count = size / RECORD_SIZE;
    book_entries = new (std::nothrow) BookEntry[static_cast<std::size_t>(count)];
    if (book_entries == nullptr) {
        delete[] buffer;
        return false;
    }
    for (int i = 0; i < count; ++i)
        book_entries[i] = read_record(buffer + static_cast<std::ptrdiff_t>(i) * RECORD_SIZE);
    delete[] buffer;
    book_entry_count = count;
    own_book = true;
    // Only book_probe.cpp calls rand().
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    return true;
}

} // namespace brindlemoth
