// What the engine prints, for tests that run searches and commands inside the test program.
#pragma once

#include "support/support.h"

#include <functional>

namespace brindlemoth {

// The lines that the action prints on standard output, without their line feeds. Standard input
// is empty meanwhile and from then on, so that no search is stopped by what it polls.
std::vector<std::string> output_of(const std::function<void()>& action);

// An info line without its nps and time, which differ from run to run.
std::string without_timing(const std::string& line);

// The lines joined by line feeds.
std::string joined(const std::vector<std::string>& lines);

} // namespace brindlemoth
