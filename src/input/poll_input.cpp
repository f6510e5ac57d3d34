#include "input/poll_input.h"

#include "input/line_reader.h"
#include "platform/standard_output.h"

#include <cstdio>
#include <cstring>

namespace brindlemoth {

std::uint8_t stop_flag;

namespace {

// The pending-line queue, first in, first out. Invariants:
// - 0 <= pending_count <= PENDING_CAPACITY and 0 <= pending_head < PENDING_CAPACITY.
// - The lines stand in `pending_count` slots from `pending_head` on, the oldest first; slot 0
//   follows the last slot.
// - Every line in the queue arrived before every line in the input buffer.
constexpr int PENDING_CAPACITY = 16;
char pending_lines[PENDING_CAPACITY][PENDING_LINE_SIZE];
int pending_count;
int pending_head;

// Never cleared: the program ends when the command loop reaches the quit.
bool quit_was_read;

// Whether the next line goes to the queue. Otherwise it stays in the input buffer.
bool queue_is_open() {
    return !stop_flag && pending_count < PENDING_CAPACITY && !has_kept_lines();
}

void enqueue_line(const char* line) {
    char* const slot = pending_lines[(pending_head + pending_count) % PENDING_CAPACITY];
    std::snprintf(slot, PENDING_LINE_SIZE, "%s", line);
    ++pending_count;
}

// Does what a line asks of the running search. Returns true if nothing is left for the command
// loop.
bool act_at_once(const char* line) {
    if (std::strcmp(line, "isready") == 0) {
        print("readyok\n");
        return true;
    }
    if (std::strcmp(line, "quit") == 0) {
        stop_flag = 1;
        quit_was_read = true;
        return false;
    }
    if (std::strcmp(line, "stop") == 0) {
        stop_flag = 1;
        return true;
    }
    return line[0] == '\0';
}

} // namespace

void poll_input() {
    char line[PENDING_LINE_SIZE];
    while (queue_is_open()) {
        if (!poll_line(line, PENDING_LINE_SIZE))
            return;
        if (!act_at_once(line))
            enqueue_line(line);
    }
    scan_lines(act_at_once);
}

bool quit_is_pending() {
    return quit_was_read;
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
