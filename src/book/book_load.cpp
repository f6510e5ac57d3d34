// Reading a book file. Any file may be named; one that is no book, or that changes while it is
// read, leaves the engine without a book.
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

// A record of the file is 16 bytes with the most significant byte of each number first:
// 8 bytes key, 2 move, 2 weight, and 4 that are of no use here.
constexpr int RECORD_SIZE = 16;

std::uint64_t big_endian(const unsigned char* bytes, int size) {
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

// The file's size in bytes when it is that of a book: whole records, at least one, and within
// 32 signed bits. Otherwise 0.
int book_file_size(std::FILE* file) {
    const std::int64_t size = regular_file_size(file);
    const bool is_book =
        size >= RECORD_SIZE && size % RECORD_SIZE == 0 && size <= std::numeric_limits<int>::max();
    return is_book ? static_cast<int>(size) : 0;
}

// The whole file in a buffer that the caller deletes, and its size; nullptr when it is no book,
// does not fit into memory, or is shorter by now than it just said.
unsigned char* read_book_file(const char* path, int& size) {
    std::FILE* const file = open_regular_file(path);
    if (file == nullptr)
        return nullptr;
    unsigned char* buffer = nullptr;
    size = book_file_size(file);
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
    for (int i = 0; i < count; ++i) {
        const unsigned char* const record = buffer + static_cast<std::ptrdiff_t>(i) * RECORD_SIZE;
        book_entries[i].key = big_endian(record, 8);
        book_entries[i].move = static_cast<std::uint16_t>(big_endian(record + 8, 2));
        book_entries[i].weight = static_cast<std::uint16_t>(big_endian(record + 10, 2));
    }
    delete[] buffer;
    book_entry_count = count;
    own_book = true;
    // The only seeding in the program; book_probe.cpp is the only caller of rand().
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    return true;
}

} // namespace brindlemoth
