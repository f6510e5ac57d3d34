#include "platform/standard_input.h"

#include <windows.h>

namespace brindlemoth {

bool input_waiting() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (input == INVALID_HANDLE_VALUE)
        return false;
    DWORD mode = 0;
    if (GetConsoleMode(input, &mode)) {
        DWORD events = 0;
        return GetNumberOfConsoleInputEvents(input, &events) && events != 0;
    }
    // A pipe tells how much is in it. A file and a broken pipe do not: a read of them returns.
    DWORD available = 0;
    return !PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr) || available != 0;
}

int read_input(char* buffer, int size) {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD count = 0;
    if (input == INVALID_HANDLE_VALUE ||
        !ReadFile(input, buffer, static_cast<DWORD>(size), &count, nullptr))
        return 0;
    return static_cast<int>(count);
}

} // namespace brindlemoth
