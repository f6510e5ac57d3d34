// The tables at hand: solved in this run, or read back from files of a directory that can be
// trusted. Both tasks take from here what an endgame converts into.
#pragma once

#include "solver/solver.h"

#include <set>
#include <span>
#include <string>

namespace brindlemoth::tablegen {

struct Shelf {
    std::string directory;
    int threads = 1;
    std::set<std::string> trusted; // signatures whose WDL file is known to be right
    TableSet tables;               // that are in memory
};

// The work that a table takes, roughly, and that of reading it back.
double work_of(const Signature& signature);
double reading_work_of(const Signature& signature);

// Reads the values of a table back from its WDL file, after those of what its captures lead to.
// False, and nothing has happened to the table, if the file is not trusted or cannot be read.
bool read_back(Shelf& shelf, const Signature& signature, Progress& progress);

// Solves a signature, and hands on its parts. What it converts into is there already, read back, or
// solved first; this is part of the progress.
void solve_from(Shelf& shelf, const Signature& signature, const VisitPart& visit,
                Progress progress);

// Drops tables from memory but those that are needed soonest.
void make_room(Shelf& shelf, std::span<const Signature> to_come);

} // namespace brindlemoth::tablegen
