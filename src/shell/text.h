// Reading the words and numbers of a command line. A line is a NUL-terminated text. Only the space
// character is a blank: a tab is part of a word.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace brindlemoth {

inline const char* skip_blanks(const char* text) {
    while (*text == ' ')
        ++text;
    return text;
}

inline bool begins_with(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

// Reads the decimal number at the start of the text, which may follow white space and a sign.
// Returns 0 if there is none. A number that does not fit into an int becomes the nearest int.
inline int read_number(const char* text) {
    using Limits = std::numeric_limits<int>;
    const long long number = std::strtoll(text, nullptr, 10);
    return static_cast<int>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

} // namespace brindlemoth
