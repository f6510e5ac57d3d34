// From the solved parts of an endgame to its two table files.
#pragma once

#include "file/table_file.h"
#include "solver/solver.h"

#include <span>

namespace brindlemoth::tablegen {

// A file without streams yet.
TableFile empty_file(FileKind kind, const Signature& signature);

// Adds the streams of a part to the files, of which there may be one or both. A WDL file of the
// same men on both sides stores one side to move, and a DTZ file always does.
void add_part(const Part& part, std::span<TableFile> files, int threads, Progress progress);

} // namespace brindlemoth::tablegen
