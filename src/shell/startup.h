// Start-up and shut-down of everything global, in their fixed order. main() and the test programs
// call these; nothing else does.
#pragma once

namespace brindlemoth {

// Fills every table, allocates the transposition table and clears the search memory.
// Called once, before any position is set up.
void start_engine();

// Releases the transposition table.
void stop_engine();

} // namespace brindlemoth
