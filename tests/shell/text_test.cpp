#include "shell/text.h"

#include <gtest/gtest.h>

namespace brindlemoth {
namespace {

TEST(CommandText, NumbersReadAsAtoiReadsThemOn64Bits) {
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
                {"-2147483648", -2147483647 - 1},
                {"2147483648", -2147483647 - 1},
                {"4294967297", 1},
                {"-4294967299", -3},
                {"9223372036854775807", -1},
                {"9223372036854775808", -1}, // saturates at 64 bits
                {"-9223372036854775808", 0},
                {"-9999999999999999999999", 0}};
    for (const auto& row : ROWS)
        EXPECT_EQ(read_number(row.text), row.number) << row.text;
}

} // namespace
} // namespace brindlemoth
