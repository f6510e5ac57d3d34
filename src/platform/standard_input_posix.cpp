#include "platform/standard_input.h"

#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <unistd.h>

namespace brindlemoth {

// Waits at most `timeout` milliseconds, or without limit if it is -1, until a read would return at
// once. Returns whether it would.
static bool wait_for_input(int timeout) {
    for (;;) {
        pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        const int ready = poll(&input, 1, timeout);
        if (ready >= 0)
            return ready > 0; // also on a hang-up or a closed descriptor, where a read returns 0
        if (errno != EINTR) {
            // The state is unknown. On a terminal a read could wait; elsewhere the read will tell.
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
        // The descriptor may be in non-blocking mode, which it shares with the parent process.
        const bool nothing_yet = errno == EAGAIN;
        if (errno != EINTR && !(nothing_yet && wait_for_input(-1)))
            return 0;
    }
}

} // namespace brindlemoth
