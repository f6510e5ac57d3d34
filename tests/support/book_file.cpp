#include "support/book_file.h"

#include "book/book.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {

int book_move(int from, int to, int promotion) {
    return file_of(to) | (rank_of(to) << 3) | (file_of(from) << 6) | (rank_of(from) << 9) |
           (promotion << 12);
}

static void append_big_endian(std::string& bytes, std::uint64_t value, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>((value >> shift) & 0xFF));
}

std::string book_bytes(const std::vector<BookRecord>& records) {
    std::string bytes;
    for (const BookRecord& record : records) {
        append_big_endian(bytes, record.key, 8);
        append_big_endian(bytes, static_cast<std::uint64_t>(record.move), 2);
        append_big_endian(bytes, static_cast<std::uint64_t>(record.weight), 2);
        append_big_endian(bytes, 0xFFFFFFFF, 4);
    }
    return bytes;
}

TemporaryDirectory::TemporaryDirectory() {
    std::error_code failure;
    do
        path = testing::TempDir() + "brindlemoth_" + std::to_string(std::random_device{}());
    while (!std::filesystem::create_directory(path, failure) && !failure);
    EXPECT_FALSE(failure) << path;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string TemporaryDirectory::write(const std::string& name, const std::string& bytes) const {
    std::string file = path + "/" + name;
    const std::filesystem::path utf8 = std::u8string(file.begin(), file.end());
    std::ofstream(utf8, std::ios::binary) << bytes;
    return file;
}

bool load_records(const std::vector<BookRecord>& records) {
    const TemporaryDirectory directory;
    return book_load(directory.write("book.bin", book_bytes(records)).c_str());
}

} // namespace brindlemoth
