// Standard output is replaced for the length of one test.
#include "platform/standard_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace brindlemoth;

// What the action writes to an output in non-blocking mode, whose reader is slower than it.
template <typename Action> std::string written_by(int output, int input, Action action) {
    std::string received;
    std::thread reader([&] {
        char portion[512];
        for (ssize_t count; (count = read(input, portion, sizeof portion)) > 0;)
            received.append(portion, static_cast<std::size_t>(count)).push_back('|');
    });
    const int saved_output = dup(STDOUT_FILENO);
    dup2(output, STDOUT_FILENO);
    close(output);
    EXPECT_EQ(fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK), 0);
    action();
    dup2(saved_output, STDOUT_FILENO);
    close(saved_output);
    reader.join();
    close(input);
    return received;
}

TEST(StandardOutput, EachPrintIsOneWrite) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    EXPECT_EQ(written_by(ends[0], ends[1],
                         [] {
                             print("uciok\n");
                             print("%s %d\n", "info", 7);
                         }),
              "uciok\n|info 7\n|");
}

TEST(StandardOutput, ANonBlockingPipeLosesNothing) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string text(10 * MAX_PRINT, 'x');
    std::string received = written_by(ends[1], ends[0], [&] {
        for (int i = 0; i < 100; ++i)
            write_output(text.data(), text.size());
        print("%s", text.c_str());
    });
    std::erase(received, '|');
    EXPECT_EQ(received.size(), 100 * text.size() + MAX_PRINT - 1);
}
