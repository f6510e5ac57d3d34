// From the solved parts of an endgame to its two table files. Chooses for each stream what the
// format leaves open so that it compresses well: the order of the men, the values of positions that
// no reader will look up, the side to move that a DTZ file stores, the value maps.
#pragma once

#include "file/table_file.h"
#include "solver/solver.h"

#include <span>

namespace brindlemoth::tablegen {

// Whether readers look a position up in the DTZ file that stores this side to move: it is not
// drawn, and no capture or pawn move wins at once.
bool dtz_matters(Cell cell);

// A file without streams yet.
TableFile empty_file(FileKind kind, const Signature& signature);

// Adds the streams of a part to the files, of which there may be one or both. A WDL file of the
// same men on both sides stores one side to move, and a DTZ file always does.
void add_part(const Part& part, std::span<TableFile> files, int threads, const Progress& progress);

} // namespace brindlemoth::tablegen
