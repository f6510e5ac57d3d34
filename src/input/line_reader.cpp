#include "input/line_reader.h"

#include "platform/standard_input.h"

#include <algorithm>
#include <cstring>

namespace brindlemoth {

namespace {

// Larger than any line's capacity, so that a full buffer always holds a line or a piece of one.
constexpr int BUFFER_SIZE = 16384;

char buffer[BUFFER_SIZE];
int buffer_begin;
int buffer_end;
bool input_ended;

// Reads once into the free part of the buffer, waiting if nothing is there.
void fill_buffer() {
    if (buffer_begin > 0) {
        std::memmove(buffer, buffer + buffer_begin,
                     static_cast<std::size_t>(buffer_end - buffer_begin));
        buffer_end -= buffer_begin;
        buffer_begin = 0;
    }
    const int received = read_input(buffer + buffer_end, BUFFER_SIZE - buffer_end);
    if (received == 0)
        input_ended = true;
    buffer_end += received;
}

// Takes the first line or piece of a line out of the buffer. False when its end is not there yet.
bool take_line(char* line, int capacity) {
    const int available = buffer_end - buffer_begin;
    const int limit = std::min(available, capacity - 1);
    const char* const start = buffer + buffer_begin;
    const void* const newline = std::memchr(start, '\n', static_cast<std::size_t>(limit));
    int taken = limit;
    if (newline != nullptr)
        taken = static_cast<int>(static_cast<const char*>(newline) - start) + 1;
    else if (limit < capacity - 1 && !(input_ended && available > 0))
        return false;
    std::memcpy(line, start, static_cast<std::size_t>(taken));
    line[taken] = '\0';
    buffer_begin += taken;

    std::size_t length = std::strlen(line);
    while (length > 0 && (line[length - 1] == '\n' || line[length - 1] == '\r'))
        line[--length] = '\0';
    return true;
}

} // namespace

bool read_line(char* line, int capacity) {
    while (!take_line(line, capacity)) {
        if (input_ended)
            return false;
        fill_buffer();
    }
    return true;
}

bool poll_line(char* line, int capacity) {
    while (!take_line(line, capacity)) {
        if (input_ended || !input_waiting())
            return false;
        fill_buffer();
    }
    return true;
}

} // namespace brindlemoth
