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

bool is_quit(const char* line) {
    return std::strcmp(line, "quit") == 0;
}

// How many quits the ring had no room for, in the input from there on. Each has stopped a search.
int quits_behind_ring;

// What a line means for the running search. True when nothing of it is left for the command loop.
bool act_at_once(const char* line) {
    if (std::strcmp(line, "isready") == 0) {
        print("readyok\n");
        return true;
    }
    const bool stop = std::strcmp(line, "stop") == 0;
    if (stop || is_quit(line))
        stop_flag = 1;
    return stop || line[0] == '\0';
}

bool act_behind_ring(const char* line) {
    quits_behind_ring += is_quit(line) ? 1 : 0;
    return act_at_once(line);
}

} // namespace

void poll_input() {
    char line[PENDING_LINE_SIZE];
    while (pending_count < PENDING_CAPACITY && poll_line(line, PENDING_LINE_SIZE)) {
        if (quits_behind_ring > 0 && is_quit(line)) {
            --quits_behind_ring;
            park_line(line);
        } else if (!act_at_once(line)) {
            park_line(line);
        }
    }
    if (pending_count == PENDING_CAPACITY)
        sift_lines(act_behind_ring);
}

bool quit_is_pending() {
    for (int i = 0; i < pending_count; ++i)
        if (is_quit(pending_lines[(pending_head + i) % PENDING_CAPACITY]))
            return true;
    return quits_behind_ring > 0;
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
