// Compares the files of a table with the endgame solved afresh, value by value.
#pragma once

#include "file/table_reader.h"
#include "solver/solver.h"

#include <cstdint>
#include <string>

namespace brindlemoth::tablegen {

struct Verdict {
    std::uint64_t positions = 0; // legal positions that have a value
    std::uint64_t wrong = 0;     // of these: another value than the solver's
    std::string first_wrong;     // the first of these, for a message
};

void add_verdict(Verdict& verdict, const Verdict& other);

// Reads the streams of a part's file position from end to end. A stored WDL value is right if a
// reader that also tries captures gets the solver's value from it; in a DTZ file only the positions
// count that readers look up, and a stream that counts moves may be one ply short of the distance.
Verdict judge(const Part& part, const TableReader& reader, Progress progress);

} // namespace brindlemoth::tablegen
