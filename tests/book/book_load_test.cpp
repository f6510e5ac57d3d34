// Loading a book from every kind of file that a user may name.
#include "book/book.h"
#include "support/book_file.h"
#include "support/system.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

using namespace brindlemoth;

const std::vector<BookRecord> TWO_RECORDS = {{0x0123456789ABCDEF, 0x1234, 0x5678},
                                             {0xFEDCBA9876543210, 0xFFFF, 1}};

TEST(BookLoad, ReadsRecordsMostSignificantByteFirstWhateverTheFileIsCalled) {
    const TemporaryDirectory directory; // the path is taken as it is
    const std::string name = on_posix ? " \"100%s%n  blanks\" " : " 100%s%n  blanks";
    const std::string path = directory.write(name, book_bytes(TWO_RECORDS));
    ASSERT_TRUE(book_load(path.c_str()));
    EXPECT_TRUE(own_book);
    ASSERT_EQ(book_entry_count, 2);
    EXPECT_EQ(book_entries[0].key, 0x0123456789ABCDEFU);
    EXPECT_EQ(book_entries[0].move, 0x1234);
    EXPECT_EQ(book_entries[0].weight, 0x5678);
    EXPECT_EQ(book_entries[1].key, 0xFEDCBA9876543210U);
    EXPECT_EQ(book_entries[1].move, 0xFFFF);
    EXPECT_EQ(book_entries[1].weight, 1);
}

// A sparse file: long, and without any data.
static std::string write_sparse(const TemporaryDirectory& directory, std::uintmax_t size) {
    std::string path = directory.write("sparse", "");
    std::error_code failure;
    std::filesystem::resize_file(path, size, failure);
    return failure ? directory.path + "/missing" : path;
}

TEST(BookLoad, AnythingElseLeavesNoBookSilently) {
    const TemporaryDirectory directory;
    const auto file_of_size = [&](std::size_t size) {
        return directory.write("file", std::string(size, '\1'));
    };
    const struct {
        const char* what;
        std::function<std::string()> path;
    } ROWS[] = {
        {"no path", [] { return std::string(); }},
        {"over-long path", [] { return "/" + std::string(100'000, 'x'); }},
        {"directory", [&] { return directory.path; }},
        {"empty", [&] { return file_of_size(0); }},
        {"17 bytes", [&] { return file_of_size(17); }},
        {"2 gigabytes", [&] { return write_sparse(directory, std::uintmax_t{1} << 31); }},
        // The low 32 bits of this size are those of a book of one record.
        {"4 gigabytes + 16",
         [&] { return write_sparse(directory, (std::uintmax_t{1} << 32) + 16); }},
        {"pipe with nobody writing",
         [&] {
             const std::string path = directory.path + "/pipe";
             make_named_pipe(path);
             return path;
         }},
        {"device that never ends", [] { return std::string("/dev/zero"); }},
        // A regular file that says 4,096 bytes and gives fewer, as one that shrinks meanwhile does.
        {"fewer bytes than the size says",
         [] { return std::string("/sys/kernel/mm/transparent_hugepage/enabled"); }},
    };
    for (const auto& row : ROWS) {
        ASSERT_TRUE(load_records(TWO_RECORDS));
        const std::string path = row.path();
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_FALSE(book_load(path.c_str())) << row.what;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << row.what;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << row.what;
        EXPECT_FALSE(own_book) << row.what;
        EXPECT_EQ(book_entries, nullptr) << row.what;
        EXPECT_EQ(book_entry_count, 0) << row.what;
    }
}
