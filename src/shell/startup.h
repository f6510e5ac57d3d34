// Start-up and shut-down of the global state, each in a fixed order. main(), the test programs, the
// benchmarks and the fuzz targets call these.
#pragma once

namespace brindlemoth {

// Fills every table, allocates the transposition table and clears the history tables. Must be
// called once, before any position is set up.
void start_engine();

// Releases the transposition table.
void stop_engine();

} // namespace brindlemoth
