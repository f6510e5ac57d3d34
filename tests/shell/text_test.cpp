#include "shell/text.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(CommandText, NumbersSaturateAt32Bits) {
    const struct {
        const char* text;
        int number;
    } ROWS[] = {{"", 0},
                {"x", 0},
                {"-", 0},
                {"0x10", 0},
                {"1e3", 1},
                {"  \t\r\n 42", 42},
                {"+6", 6},
                {"--6", 0},
                {"2147483648", 2147483647},
                {"-4294967299", -2147483647 - 1},
                {"9999999999999999999999", 2147483647}};
    for (const auto& row : ROWS)
        EXPECT_EQ(read_number(row.text), row.number) << row.text;
}

} // namespace
} // namespace brindlemoth
