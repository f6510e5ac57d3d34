#include "input/poll_input.h"

#include "input/line_reader.h"
#include "platform/standard_output.h"

#include <cstdio>
#include <cstring>

namespace brindlemoth {

char pending_lines[PENDING_CAPACITY][PENDING_LINE_SIZE];
int pending_count;
int pending_head;
std::uint8_t stop_flag;

namespace {

void park_line(const char* line) {
    char* const slot = pending_lines[(pending_head + pending_count) % PENDING_CAPACITY];
    std::snprintf(slot, PENDING_LINE_SIZE, "%s", line);
    ++pending_count;
}

} // namespace

void poll_input() {
    char line[PENDING_LINE_SIZE];
    while (pending_count < PENDING_CAPACITY && poll_line(line, PENDING_LINE_SIZE)) {
        if (std::strcmp(line, "stop") == 0) {
            stop_flag = 1;
        } else if (std::strcmp(line, "isready") == 0) {
            print("readyok\n");
        } else if (std::strcmp(line, "quit") == 0) {
            stop_flag = 1;
            park_line(line);
        } else if (line[0] != '\0') {
            park_line(line);
        }
    }
}

bool take_pending_line(char* line) {
    if (pending_count == 0)
        return false;
    std::memcpy(line, pending_lines[pending_head], PENDING_LINE_SIZE);
    pending_head = (pending_head + 1) % PENDING_CAPACITY;
    --pending_count;
    return true;
}

} // namespace brindlemoth
