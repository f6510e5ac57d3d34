#include "platform/large_memory.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace brindlemoth {
namespace {

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

} // namespace
} // namespace brindlemoth
