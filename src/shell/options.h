// The options: their announcement in the reply to "uci", and the setoption command. The program
// keeps no option values: each option acts at once on the part of the engine that it belongs to.
// The command loop calls both functions, between searches only.
#pragma once

namespace brindlemoth {

constexpr int DEFAULT_HASH_MEGABYTES = 64;

// Prints the name of the engine, its options and "uciok".
void cmd_uci();

// Applies one "setoption name <name> value <value>" line. Prints nothing, whatever the line holds.
void cmd_setoption(const char* line);

} // namespace brindlemoth
