// Mapping whole files, what open_file() refuses, and large blocks of memory.
#include "platform/file_mapping.h"
#include "platform/large_memory.h"
#include "support/book_file.h"
#include "support/system.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace brindlemoth;

TEST(FileMapping, ShowsTheWholeFileAfterTheHandleIsClosed) {
    const TemporaryDirectory directory;
    std::string bytes(100000, 'x');
    bytes.front() = 'a';
    bytes.back() = 'z';
    const FileHandle file = open_file(directory.write("table", bytes).c_str());
    MappingHandle mapping{};
    const std::uint8_t* view = nullptr;
    std::uint64_t size = 0;
    ASSERT_EQ(map_file(file, mapping, view, size), MapResult::MAPPED);
    EXPECT_TRUE(close_file(file));
    ASSERT_EQ(size, bytes.size());
    EXPECT_EQ(std::memcmp(view, bytes.data(), bytes.size()), 0);
    EXPECT_TRUE(unmap_view(view, mapping));
    EXPECT_TRUE(close_mapping(mapping));
}

TEST(FileMapping, RefusesWhatIsNoFileOrEmpty) {
    const TemporaryDirectory directory;
    const std::string pipe = directory.path + "/pipe";
    make_named_pipe(pipe); // or there is nothing of that name
    for (const std::string& name : {directory.path, pipe, directory.path + "/missing"})
        EXPECT_EQ(open_file(name.c_str()), INVALID_FILE) << name;
    const FileHandle file = open_file(directory.write("empty", "").c_str());
    MappingHandle mapping{};
    const std::uint8_t* view = nullptr;
    std::uint64_t size = 1;
    EXPECT_NE(map_file(file, mapping, view, size), MapResult::MAPPED);
    EXPECT_NE(last_file_error(), 0UL);
    EXPECT_TRUE(close_file(file));
}

TEST(LargeMemory, IsZeroedAndWritableToItsLastByte) {
    for (const std::size_t megabytes : {1U, 2U, 3U, 64U}) {
        const std::size_t bytes = megabytes << 20;
        auto* const block = static_cast<unsigned char*>(allocate_large(bytes));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(std::count(block, block + bytes, 0), static_cast<std::ptrdiff_t>(bytes));
        std::fill(block, block + bytes, static_cast<unsigned char>(0xFF));
        release_large(block, bytes);
    }
    release_large(nullptr, 1 << 20);
    EXPECT_EQ(allocate_large(std::numeric_limits<std::size_t>::max() / 4), nullptr);
}
