#include "support/system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>
#include <sys/stat.h>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brindlemoth {

const bool on_posix = false;
const char* const null_device = "NUL";
const char* const line_end = "\r\n";

bool make_pipe(int (&ends)[2]) {
    return _pipe(ends, 1 << 20, _O_BINARY | _O_NOINHERIT) == 0;
}

int open_to_read(const std::string& path) {
    return _open(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

int open_scratch() {
    char path[MAX_PATH];
    if (GetTempFileNameA(testing::TempDir().c_str(), "bri", 0, path) == 0)
        return -1;
    return _open(path, _O_RDWR | _O_BINARY | _O_NOINHERIT | _O_TEMPORARY, _S_IREAD | _S_IWRITE);
}

std::string read_scratch(int scratch) {
    std::string text(4096, '\0');
    _lseek(scratch, 0, SEEK_SET);
    text.resize(
        static_cast<std::size_t>(_read(scratch, text.data(), static_cast<unsigned>(text.size()))));
    return text;
}

// The handle of a descriptor, for the child to inherit while there is an owner of it.
static HANDLE lend(int descriptor) {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

std::intptr_t start_process(const std::vector<std::string>& words, int input, int output,
                            int error) {
    std::string line; // no word has a quotation mark in it
    for (const std::string& word : words)
        line += "\"" + word + "\" ";
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = lend(input);
    start.hStdOutput = lend(output);
    start.hStdError = lend(error);
    PROCESS_INFORMATION process{};
    const bool started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &start, &process) != 0;
    for (const HANDLE handle : {start.hStdInput, start.hStdOutput, start.hStdError})
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    if (!started)
        return -1;
    CloseHandle(process.hThread);
    return reinterpret_cast<std::intptr_t>(process.hProcess);
}

int wait_for_process(std::intptr_t process) {
    const auto handle = reinterpret_cast<HANDLE>(process);
    DWORD status = 0;
    EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeProcess(handle, &status));
    CloseHandle(handle);
    return static_cast<int>(status);
}

void kill_process(std::intptr_t process) {
    TerminateProcess(reinterpret_cast<HANDLE>(process), 1);
    wait_for_process(process);
}

void set_hang_guard(unsigned) {}

bool make_named_pipe(const std::string&) {
    return false;
}

} // namespace brindlemoth
