// What the tests ask of the operating system. One source answers for each kind of system.
// Descriptors are those of the C library, which Windows has too.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brindlemoth {

// Whether there are the shell, the limits and the files of POSIX: a case that asks for more than
// both kinds of systems have calls GTEST_SKIP() otherwise.
extern const bool on_posix;
extern const char* const null_device;
extern const char* const line_end; // what ends a line that a program prints

// Opens a pipe for start_process(): [0] to read from, [1] to write to. It holds a mebibyte where
// the system lets it.
bool make_pipe(int (&ends)[2]);
// Opens a file that start_process() may give to a program as its input; -1 on failure.
int open_to_read(const std::string& path);
// Opens a file without a name; -1 on failure. read_scratch() returns what is in it, at most 4,096
// bytes, also while another process writes to it.
int open_scratch();
std::string read_scratch(int scratch);

// Starts a program with the descriptors as its standard input, output and error, and returns
// the process, or -1. It inherits no other descriptor that was opened by the functions above.
std::intptr_t start_process(const std::vector<std::string>& words, int input, int output,
                            int error);
// Waits for its end. Its exit status, or the negative number of the signal that ended it.
int wait_for_process(std::intptr_t process);
void kill_process(std::intptr_t process);

// Lets the test program end when that many seconds have passed without another call; 0 lifts it.
// Where the system has no alarm, the limit that CTest sets has to do.
void set_hang_guard(unsigned seconds);

// Makes a pipe that has a name. False where the system has none.
bool make_named_pipe(const std::string& path);

} // namespace brindlemoth
