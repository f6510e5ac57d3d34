#include "platform/standard_input.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace brindlemoth {

namespace {

// A console holds every key and mouse event; a read of it waits for a whole line. So the events
// are looked through for the key that ends one.
bool console_has_line(HANDLE console) {
    constexpr DWORD MOST_EVENTS = 2048; // older consoles tell no more than 64 KiB of them at once
    static INPUT_RECORD events[MOST_EVENTS];
    DWORD count = 0;
    if (!PeekConsoleInputA(console, events, MOST_EVENTS, &count))
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
