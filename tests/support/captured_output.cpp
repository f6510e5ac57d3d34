#include "support/captured_output.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>

namespace brindlemoth {

std::vector<std::string> output_of(const std::function<void()>& action) {
    static const bool input_is_empty = std::freopen("/dev/null", "r", stdin) != nullptr;
    EXPECT_TRUE(input_is_empty);
    testing::internal::CaptureStdout();
    action();
    std::istringstream text(testing::internal::GetCapturedStdout());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

std::string without_timing(const std::string& line) {
    const std::size_t begin = line.find(" nps ");
    const std::size_t end = line.find(" pv");
    return begin < end ? line.substr(0, begin) + line.substr(end) : line;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

} // namespace brindlemoth
