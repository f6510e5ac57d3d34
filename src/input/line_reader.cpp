#include "input/line_reader.h"

#include "platform/standard_input.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace brindlemoth {

namespace {

// Larger than any line's capacity, so that a full buffer always holds a line or a piece of one.
constexpr int BUFFER_SIZE = 16384;

constexpr int SCANNED_LINE_SIZE = 64; // with the terminator

// The bytes that were read and not yet returned. Invariants:
// - 0 <= begin <= scanned_end <= kept_end <= end <= BUFFER_SIZE.
// - bytes[begin, end) is the input in its order; `begin` is the start of a line, or of the next
//   piece of a line whose first piece was returned.
// - bytes[begin, scanned_end) are whole lines that scan_lines() has shown and kept.
// - bytes[scanned_end, kept_end) is the beginning of a line that was unfinished at the last scan.
// - bytes[kept_end, end) arrived after the last scan.
struct InputBuffer {
    char bytes[BUFFER_SIZE];
    int begin;
    int scanned_end;
    int kept_end;
    int end;
};

InputBuffer input;
bool input_ended;

void remove_bytes(int position, int count) {
    std::memmove(input.bytes + position, input.bytes + position + count,
                 static_cast<std::size_t>(input.end - position - count));
    input.end -= count;
}

// Reads once into the free part of the buffer, waiting if nothing has arrived.
void fill_buffer() {
    const int returned = input.begin;
    remove_bytes(0, returned);
    input.begin = 0;
    input.scanned_end -= returned;
    input.kept_end -= returned;
    const int received = read_input(input.bytes + input.end, BUFFER_SIZE - input.end);
    input_ended = received == 0;
    input.end += received;
}

// The length, with its line feed, of the line that starts at `position`, or 0 if it does not end
// within `size` bytes. The end of the input also ends a line.
int find_line_length(int position, int size) {
    const char* const start = input.bytes + position;
    const void* const newline = std::memchr(start, '\n', static_cast<std::size_t>(size));
    if (newline == nullptr)
        return input_ended ? size : 0;
    return static_cast<int>(static_cast<const char*>(newline) - start) + 1;
}

// Copies `length` bytes from `position` on and removes the line feed and carriage returns at the
// end.
void copy_line(char* line, int position, int length) {
    std::memcpy(line, input.bytes + position, static_cast<std::size_t>(length));
    line[length] = '\0';
    std::size_t kept = std::strlen(line);
    while (kept > 0 && (line[kept - 1] == '\n' || line[kept - 1] == '\r'))
        line[--kept] = '\0';
}

// Takes the first line, or piece of a line, out of the buffer. Returns false if its end has not
// arrived.
bool take_line(char* line, int capacity) {
    const int limit = std::min(input.end - input.begin, capacity - 1);
    int length = find_line_length(input.begin, limit);
    if (length == 0) {
        if (limit < capacity - 1)
            return false;
        length = limit;
    }
    copy_line(line, input.begin, length);
    input.begin += length;
    input.scanned_end = std::max(input.scanned_end, input.begin);
    input.kept_end = std::max(input.kept_end, input.begin);
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

void scan_lines(bool (*act)(const char* line)) {
    while (!input_ended && input.end - input.begin < BUFFER_SIZE && input_waiting())
        fill_buffer();
    while (const int length = find_line_length(input.scanned_end, input.end - input.scanned_end)) {
        char line[SCANNED_LINE_SIZE];
        bool done = false;
        if (length < SCANNED_LINE_SIZE) {
            copy_line(line, input.scanned_end, length);
            done = act(line);
        }
        if (done)
            remove_bytes(input.scanned_end, length);
        else
            input.scanned_end += length;
    }
    input.kept_end = input.end;
}

bool has_kept_lines() {
    return input.kept_end > input.begin;
}

} // namespace brindlemoth
