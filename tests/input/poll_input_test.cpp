#include "input/line_reader.h"
#include "input/poll_input.h"
#include "support/support.h"

#include <gtest/gtest.h>
#include <unistd.h>

using namespace brindlemoth;

constexpr std::size_t PENDING_CAPACITY = 16;
constexpr std::size_t PIECE_LENGTH = PENDING_LINE_SIZE - 1;
constexpr int PROMPT_LINE_SIZE = 4096;

// Lines for the command loop, with "isready" and blank lines between them.
struct Traffic {
    Lines lines;
    std::string text;
    std::size_t isreadys = 0;
};

static Traffic random_traffic(std::mt19937_64& random, std::size_t min_size,
                              std::size_t max_length) {
    Traffic traffic;
    while (traffic.text.size() < min_size) {
        const std::size_t length = random() % (random() % 8 == 0 ? max_length : 70);
        const char letter = static_cast<char>('a' + traffic.lines.size() % 26);
        traffic.lines.push_back(std::string(length, letter) + ".");
        traffic.text += traffic.lines.back() + (random() % 2 == 0 ? "\n" : "\r\n");
        if (random() % 3 == 0) {
            traffic.text += "isready\n\n\r\n";
            ++traffic.isreadys;
        }
    }
    return traffic;
}

// The lines as they leave the queue, which cuts them into pieces, and the input buffer behind it.
static Lines expected_before_stop(const Lines& sent) {
    Lines lines;
    for (std::string line : sent) {
        for (; lines.size() < PENDING_CAPACITY && line.size() > PIECE_LENGTH;
             line.erase(0, PIECE_LENGTH))
            lines.push_back(line.substr(0, PIECE_LENGTH));
        lines.push_back(line);
    }
    return lines;
}

// What the command loop reads, up to the line "end".
static Lines take_lines() {
    Lines lines;
    char line[PROMPT_LINE_SIZE];
    while (take_pending_line(line) || read_line(line, PROMPT_LINE_SIZE)) {
        if (line == std::string("end"))
            break;
        lines.emplace_back(line);
    }
    return lines;
}

class PollInput : public testing::Test {
protected:
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        dup2(ends[0], STDIN_FILENO);
        writer = ends[1];
    }
    // Sends the text in portions of random sizes and polls after each.
    void poll_portions(const std::string& text) {
        for (std::size_t sent = 0; sent < text.size();) {
            const std::string portion = text.substr(sent, 1 + random() % (1 << random() % 13));
            ASSERT_EQ(write(writer, portion.data(), portion.size()),
                      static_cast<ssize_t>(portion.size()));
            sent += portion.size();
            poll_input();
        }
    }

    std::mt19937_64 random{19};
    int writer = -1;
};

TEST_F(PollInput, LinesKeepTheirOrderAndAreWholeBehindAStopOrQuit) {
    for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        // All of it fits into the input buffer of 16 KiB.
        const Traffic before = random_traffic(random, random() % 5000, 2000);
        const Traffic behind = random_traffic(random, random() % 4000, PROMPT_LINE_SIZE - 2);
        Lines expected = expected_before_stop(before.lines);
        const bool quits = random() % 2 == 0;
        if (quits)
            expected.emplace_back("quit");
        expected.insert(expected.end(), behind.lines.begin(), behind.lines.end());

        testing::internal::CaptureStdout();
        stop_flag = 0;
        poll_portions(before.text);
        EXPECT_EQ(stop_flag, 0);
        poll_portions(quits ? "quit\n" : "stop\n");
        EXPECT_EQ(stop_flag, 1);
        const std::size_t kept = random() % (behind.text.size() + 1);
        poll_portions(behind.text.substr(0, kept));
        if (kept > 0)
            stop_flag = 0; // a search that had to wait in the queue begins
        poll_portions(behind.text.substr(kept) + "end\n");
        EXPECT_EQ(testing::internal::GetCapturedStdout().size(),
                  std::string("readyok\n").size() * (before.isreadys + behind.isreadys));
        EXPECT_EQ(take_lines(), expected);
    }
}
