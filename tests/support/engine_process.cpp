#include "support/engine_process.h"

#include "support/system.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace brindlemoth {

static constexpr std::size_t MOST_AT_ONCE = 65536; // bytes of one read or write

static void close_descriptor(int& descriptor) {
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

// The words that start a program.
static std::vector<std::string> command_words(const std::string& program,
                                              const std::vector<std::string>& arguments) {
    std::istringstream emulator(BRINDLEMOTH_EMULATOR);
    std::vector<std::string> words{std::istream_iterator<std::string>(emulator), {}};
    words.push_back(program);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

ProgramRun run_program(const std::string& program, const std::vector<std::string>& arguments,
                       const std::string& script) {
    std::vector<std::string> words = command_words(program, arguments);
    if (!script.empty())
        words.insert(words.begin(), {"sh", "-c", script + "; exec \"$@\"", "sh"});
    int ends[2] = {-1, -1};
    EXPECT_TRUE(make_pipe(ends));
    int no_input = open_to_read(null_device);
    const std::intptr_t process = start_process(words, no_input, ends[1], ends[1]);
    EXPECT_NE(process, -1);
    close_descriptor(no_input);
    close_descriptor(ends[1]);
    ProgramRun run;
    std::array<char, MOST_AT_ONCE> buffer;
    for (auto count = read(ends[0], buffer.data(), MOST_AT_ONCE); count > 0;
         count = read(ends[0], buffer.data(), MOST_AT_ONCE))
        run.output.append(buffer.data(), static_cast<std::size_t>(count));
    close_descriptor(ends[0]);
    for (std::size_t end = 0; (end = run.output.find(line_end, end)) != std::string::npos; ++end)
        run.output.replace(end, std::string(line_end).size(), "\n");
    run.status = wait_for_process(process);
    return run;
}

EngineProcess::EngineProcess(const std::vector<std::string>& arguments,
                             const std::string& input_file) {
    int input_ends[2] = {-1, -1};
    int output_ends[2] = {-1, -1};
    if (input_file.empty())
        EXPECT_TRUE(make_pipe(input_ends));
    else
        input_ends[0] = open_to_read(input_file);
    EXPECT_TRUE(make_pipe(output_ends));
    error_file = open_scratch();
    EXPECT_GE(error_file, 0);

    process = start_process(command_words(BRINDLEMOTH_ENGINE, arguments), input_ends[0],
                            output_ends[1], error_file);
    EXPECT_NE(process, -1);
    close_descriptor(input_ends[0]);
    close_descriptor(output_ends[1]);
    input = input_ends[1];
    output = output_ends[0];
}

EngineProcess::~EngineProcess() {
    if (process != -1)
        kill_process(process);
    set_hang_guard(0);
    close_descriptor(input);
    close_descriptor(output);
    close_descriptor(error_file);
}

void EngineProcess::send_text(const std::string& text) const {
    set_hang_guard(HANG_GUARD_SECONDS);
    for (std::size_t written = 0; written < text.size();) {
        const auto portion = static_cast<unsigned>(std::min(text.size() - written, MOST_AT_ONCE));
        const auto count = write(input, text.data() + written, portion);
        if (count <= 0)
            return;
        written += static_cast<std::size_t>(count);
    }
}

void EngineProcess::close_input() {
    close_descriptor(input);
}

std::optional<std::string> EngineProcess::read_line() {
    set_hang_guard(HANG_GUARD_SECONDS);
    std::array<char, MOST_AT_ONCE> buffer;
    std::size_t end = 0;
    while ((end = pending.find('\n')) == std::string::npos) {
        const auto count = read(output, buffer.data(), MOST_AT_ONCE);
        if (count <= 0) {
            if (pending.empty())
                return std::nullopt;
            return std::exchange(pending, "");
        }
        pending.append(buffer.data(), static_cast<std::size_t>(count));
    }
    std::string line = pending.substr(0, end + 1);
    pending.erase(0, end + 1);
    EXPECT_TRUE(line.ends_with(line_end)) << line;
    line.resize(line.size() - std::string(line_end).size());
    return line;
}

std::vector<std::string> EngineProcess::read_until(const std::string& prefix) {
    std::vector<std::string> lines;
    while (std::optional<std::string> line = read_line()) {
        lines.push_back(*line);
        if (line->starts_with(prefix))
            return lines;
    }
    ADD_FAILURE() << "the output ended without a line that begins with " << prefix;
    return lines;
}

std::vector<std::string> EngineProcess::read_to_end() {
    std::vector<std::string> lines;
    while (std::optional<std::string> line = read_line())
        lines.push_back(*line);
    return lines;
}

std::vector<std::string> EngineProcess::finish() {
    close_input();
    std::vector<std::string> lines = read_to_end();
    EXPECT_EQ(wait_for_exit(), 0);
    EXPECT_EQ(read_scratch(error_file), "");
    return lines;
}

int EngineProcess::wait_for_exit() {
    set_hang_guard(HANG_GUARD_SECONDS);
    return wait_for_process(std::exchange(process, -1));
}

int count_beginning(const std::vector<std::string>& lines, const std::string& prefix) {
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.starts_with(prefix);
    }));
}

} // namespace brindlemoth
