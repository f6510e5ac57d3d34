// Holds the files of a table against the endgame solved afresh, position by position.
#pragma once

#include "solver/solver.h"
#include "verification/table_reader.h"

#include <cstdint>
#include <string>

namespace brindlemoth::tablegen {

struct Verdict {
    std::uint64_t positions = 0; // legal positions looked up
    std::uint64_t wrong = 0;     // of these: another value than the solver's
    std::string first_wrong;     // the first of these, for a message
};

// Looks up every legal position of the solver's table, for both sides to move, in a WDL file. A
// stored value is right if a reader that also tries captures gets the solver's value from it.
Verdict judge_wdl(const Table& table, const TableReader& reader, int threads,
                  const Progress& progress = {});

// The same for a DTZ file and the positions that readers look up in it. A stream that counts
// moves may be one ply short of the distance.
Verdict judge_dtz(const Table& table, const TableReader& reader, int threads,
                  const Progress& progress = {});

} // namespace brindlemoth::tablegen
