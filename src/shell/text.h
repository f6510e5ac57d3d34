// Reading the words and numbers of a command line. A line is a NUL-terminated text, and a blank
// is the space character alone: a tab is part of a word.
#pragma once

#include <cstdlib>
#include <cstring>

namespace brindlemoth {

inline const char* skip_blanks(const char* text) {
    while (*text == ' ')
        ++text;
    return text;
}

inline bool begins_with(const char* text, const char* prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

// The decimal number at the start of the text, behind white space and a sign if they are there; 0
// when there is none. Beyond 64 bits it saturates, and of the 64 bits the low 32 are the result:
// 4294967297 reads as 1, on every system.
inline int read_number(const char* text) {
    return static_cast<int>(std::strtoll(text, nullptr, 10));
}

} // namespace brindlemoth
