#include "platform/regular_file.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace brindlemoth {
namespace {

TEST(RegularFile, OnlyRegularFilesAreOpened) {
    std::string directory = testing::TempDir() + "/regular_file_XXXXXX";
    ASSERT_NE(mkdtemp(directory.data()), nullptr);
    const std::string file = directory + "/a file with blanks ";
    const std::string link = directory + "/link";
    const std::string pipe = directory + "/pipe";
    std::FILE* const written = std::fopen(file.c_str(), "wb");
    ASSERT_NE(written, nullptr);
    std::fputc('x', written);
    std::fclose(written);
    std::filesystem::create_symlink(file, link);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);

    for (const std::string& path : {file, link}) {
        std::FILE* const opened = open_regular_file(path.c_str());
        ASSERT_NE(opened, nullptr) << path;
        EXPECT_EQ(std::fgetc(opened), 'x') << path;
        std::fclose(opened);
    }
    for (const std::string& path :
         {directory, pipe, directory + "/nothing", std::string("/dev/null"), std::string()}) {
        EXPECT_EQ(open_regular_file(path.c_str()), nullptr) << path;
    }
    std::filesystem::remove_all(directory);
}

} // namespace
} // namespace brindlemoth
