// Standard input is replaced by a pipe, a file or nothing for the length of one test.
#include "platform/standard_input.h"

#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace brindlemoth;

class StandardInput : public testing::Test {
protected:
    void SetUp() override {
        saved_input = dup(STDIN_FILENO);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        writer = ends[1];
    }
    void TearDown() override {
        close_writer();
        dup2(saved_input, STDIN_FILENO);
        close(saved_input);
    }
    void send(const std::string& text) const {
        ASSERT_EQ(write(writer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void close_writer() {
        if (writer >= 0)
            close(writer);
        writer = -1;
    }
    static std::string receive(int size) {
        std::string buffer(static_cast<std::size_t>(size), '\0');
        buffer.resize(static_cast<std::size_t>(read_input(buffer.data(), size)));
        return buffer;
    }

    int saved_input = -1;
    int writer = -1;
};

TEST_F(StandardInput, PipeIsWaitingWhileItHoldsBytesAndAfterItsEnd) {
    EXPECT_FALSE(input_waiting());
    send("stop\nqu");
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(5), "stop\n");
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(100), "qu");
    EXPECT_FALSE(input_waiting());
    close_writer();
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(100), "");
    EXPECT_TRUE(input_waiting());
}

TEST_F(StandardInput, NonBlockingPipeWithNothingInItIsNotTakenForItsEnd) {
    ASSERT_EQ(fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK), 0);
    EXPECT_FALSE(input_waiting());
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        usleep(50'000); // the parent is in its read by then, or finds the bytes there
        _exit(write(writer, "go\n", 3) == 3 ? 0 : 1);
    }
    EXPECT_EQ(receive(100), "go\n");
}

TEST_F(StandardInput, FileIsAlwaysWaiting) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    std::fputs("d\n", file);
    std::rewind(file);
    dup2(fileno(file), STDIN_FILENO);
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(100), "d\n");
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(100), "");
    std::fclose(file);
}

TEST_F(StandardInput, WhatCannotBeReadHasEnded) {
    const int directory = open(".", O_RDONLY);
    dup2(directory, STDIN_FILENO);
    close(directory);
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(100), "");

    close(STDIN_FILENO);
    EXPECT_TRUE(input_waiting());
    EXPECT_EQ(receive(100), "");
}
