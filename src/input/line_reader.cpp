#include "input/line_reader.h"

#include "platform/standard_input.h"

#include <algorithm>
#include <cstring>

namespace brindlemoth {

namespace {

// Larger than any line's capacity, so that a full buffer always holds a line or a piece of one.
constexpr int BUFFER_SIZE = 16384;
constexpr int SIFTED_LINE_SIZE = 64; // with the terminator

char buffer[BUFFER_SIZE];
int buffer_begin;
int buffer_end;
int buffer_sifted; // what is in front of it was shown by sift_lines()
bool input_ended;

// Reads once into the free part of the buffer, waiting if nothing is there.
void fill_buffer() {
    if (buffer_begin > 0) {
        std::memmove(buffer, buffer + buffer_begin,
                     static_cast<std::size_t>(buffer_end - buffer_begin));
        buffer_end -= buffer_begin;
        buffer_sifted = std::max(buffer_sifted - buffer_begin, 0);
        buffer_begin = 0;
    }
    const int received = read_input(buffer + buffer_end, BUFFER_SIZE - buffer_end);
    if (received == 0)
        input_ended = true;
    buffer_end += received;
}

// Copies a line or piece of one and cuts its line feed and carriage returns off.
void copy_line(char* line, const char* start, int length) {
    std::memcpy(line, start, static_cast<std::size_t>(length));
    line[length] = '\0';
    std::size_t kept = std::strlen(line);
    while (kept > 0 && (line[kept - 1] == '\n' || line[kept - 1] == '\r'))
        line[--kept] = '\0';
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
    copy_line(line, start, taken);
    buffer_begin += taken;
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

void sift_lines(bool (*act)(const char* line)) {
    while (!input_ended && buffer_end - buffer_begin < BUFFER_SIZE && input_waiting())
        fill_buffer();
    int begin = std::max(buffer_begin, buffer_sifted);
    int kept_end = begin; // what is kept closes up behind the last line that was kept
    while (begin < buffer_end) {
        const char* const start = buffer + begin;
        const int available = buffer_end - begin;
        const void* const newline = std::memchr(start, '\n', static_cast<std::size_t>(available));
        if (newline == nullptr && !input_ended)
            break;
        const int length = newline == nullptr
                               ? available
                               : static_cast<int>(static_cast<const char*>(newline) - start) + 1;
        begin += length;
        char line[SIFTED_LINE_SIZE];
        if (length < SIFTED_LINE_SIZE) {
            copy_line(line, start, length);
            if (act(line))
                continue;
        }
        std::memmove(buffer + kept_end, start, static_cast<std::size_t>(length));
        kept_end += length;
    }
    buffer_sifted = kept_end;
    std::memmove(buffer + kept_end, buffer + begin, static_cast<std::size_t>(buffer_end - begin));
    buffer_end -= begin - kept_end;
}

} // namespace brindlemoth
