#include "platform/standard_output.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace brindlemoth {

void write_output(const char* text, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(STDOUT_FILENO, text, size);
        if (written >= 0) {
            text += written;
            size -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            // The descriptor may be in non-blocking mode, which it shares with the parent process.
            // Wait without limit until it takes more.
            pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
            poll(&output, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

} // namespace brindlemoth
