#include "support/captured_output.h"

#include "support/system.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>

namespace brindlemoth {

Lines output_of(const std::function<void()>& action) {
    static const bool input_is_empty = std::freopen(null_device, "r", stdin) != nullptr;
    EXPECT_TRUE(input_is_empty);
    testing::internal::CaptureStdout();
    action();
    std::istringstream text(testing::internal::GetCapturedStdout());
    Lines lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

std::string without_timing(const std::string& line) {
    const std::size_t begin = line.find(" nps ");
    const std::size_t end = line.find(" pv");
    return begin < end ? line.substr(0, begin) + line.substr(end) : line;
}

Lines beginnings(const Lines& lines, const Lines& prefixes) {
    Lines found;
    for (const std::string& line : lines) {
        const auto fits = [&](const std::string& prefix) { return line.starts_with(prefix); };
        const auto prefix = std::find_if(prefixes.begin(), prefixes.end(), fits);
        if (prefix != prefixes.end())
            found.push_back(*prefix);
    }
    return found;
}

std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

} // namespace brindlemoth
