#include "platform/standard_input.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brindlemoth {

namespace {

// The input of a console is a queue of key and mouse events, but a read waits for a whole line. So
// search the queue for the Enter key, which ends a line.
bool console_has_line(HANDLE console) {
    constexpr DWORD MAX_EVENTS = 2048; // older consoles return at most 64 KiB of events at once
    static INPUT_RECORD events[MAX_EVENTS];
    DWORD count = 0;
    if (!PeekConsoleInputA(console, events, MAX_EVENTS, &count))
        return false;
    for (DWORD i = 0; i < count; ++i) {
        const KEY_EVENT_RECORD& key = events[i].Event.KeyEvent;
        if (events[i].EventType == KEY_EVENT && key.bKeyDown && key.uChar.AsciiChar == '\r')
            return true;
    }
    return false;
}

} // namespace

bool input_waiting() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (input == INVALID_HANDLE_VALUE)
        return false;
    DWORD mode = 0;
    if (GetConsoleMode(input, &mode))
        return console_has_line(input);
    // PeekNamedPipe fails on a file and on a broken pipe. A read of these returns at once.
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
