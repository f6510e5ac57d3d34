// Mapping whole files, and what open_file() refuses.
#include "platform/file_mapping.h"
#include "support/book_file.h"
#include "support/system.h"

#include <cstring>
#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

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

} // namespace
} // namespace brindlemoth
