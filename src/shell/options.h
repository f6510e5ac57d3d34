// The setoption command. There is no table of option values: each option acts at once on the part
// of the engine that it belongs to. The command loop calls this between searches only.
#pragma once

namespace brindlemoth {

// Applies one "setoption name <name> value <value>" line. Says nothing, whatever the line holds.
void cmd_setoption(const char* line);

} // namespace brindlemoth
