// The tables in memory: solved in this run, or read from files that are known to be right. Making
// and verifying both find here the tables that an endgame converts into.
#pragma once

#include "solver/solver.h"

#include <set>
#include <span>
#include <string>

namespace brindlemoth::tablegen {

struct TableCache {
    std::string directory;
    int threads = 1;
    std::set<std::string> trusted; // signatures whose WDL file is known to be right
    TableSet tables;
};

// Estimates of the work that solving and storing a table takes, and that reading it back takes, in
// the same unit.
double work_of(const Signature& signature);
double reading_work_of(const Signature& signature);

// Reads the values of a table back from its WDL file. The tables that its captures lead to are read
// or solved before it. Returns false, and adds no such table, if the file is not trusted or cannot
// be read.
bool read_back(TableCache& cache, const Signature& signature, Progress& progress);

// Solves a signature, and calls visit() with its parts. Tables that it converts into and that are
// not in memory are read back or solved first, as a part of the progress.
void solve_from(TableCache& cache, const Signature& signature, const VisitPart& visit,
                Progress progress);

// Drops tables from memory. Those that the first signature converts into stay, and of those that
// later ones convert into as many as fit into a fixed size.
void make_room(TableCache& cache, std::span<const Signature> to_come);

} // namespace brindlemoth::tablegen
