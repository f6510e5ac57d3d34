#include "platform/standard_input.h"

#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <unistd.h>

namespace brindlemoth {

// Waits at most `timeout` milliseconds (-1: for ever) until a read would return.
static bool wait_for_input(int timeout) {
    for (;;) {
        pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        const int ready = poll(&input, 1, timeout);
        if (ready >= 0)
            return ready > 0; // a hang-up or a closed descriptor counts: the read returns at once
        if (errno != EINTR) {
            // Anything but a terminal is then read, to find out.
            return isatty(STDIN_FILENO) == 0;
        }
    }
}

bool input_waiting() {
    return wait_for_input(0);
}

int read_input(char* buffer, int size) {
    for (;;) {
        const ssize_t count = read(STDIN_FILENO, buffer, static_cast<std::size_t>(size));
        if (count >= 0)
            return static_cast<int>(count);
        // Whoever started the program may have left the descriptor in non-blocking mode.
        const bool nothing_yet = errno == EAGAIN;
        if (errno != EINTR && !(nothing_yet && wait_for_input(-1)))
            return 0;
    }
}

} // namespace brindlemoth
