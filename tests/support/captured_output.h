// What the engine prints, for tests that run searches and commands inside the test program.
#pragma once

#include "support/support.h"

#include <functional>

namespace brindlemoth {

// The lines that the action prints on standard output, without their line feeds. From the first
// call on, standard input is empty, so that input cannot stop a search.
Lines output_of(const std::function<void()>& action);

// An info line without its nps and time, which differ from run to run.
std::string without_timing(const std::string& line);

// Which of the prefixes the lines begin with, in the order of the lines: the first that fits, and
// nothing for a line that none fits.
Lines beginnings(const Lines& lines, const Lines& prefixes);

// The lines joined by line feeds.
std::string joined(const Lines& lines);

} // namespace brindlemoth
