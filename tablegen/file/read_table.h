// From a WDL file back to a table in memory. A file may hold any value at or below that of the best
// capture, and one image of each position: both are made good here.
#pragma once

#include "file/table_reader.h"
#include "solver/table.h"
#include "system/progress.h"

#include <memory>

namespace brindlemoth::tablegen {

// The table of an opened WDL file. What its captures lead to must be in the set. nullptr if the
// data are damaged.
std::unique_ptr<Table> read_table(const TableReader& reader, TableSet& tables, int threads,
                                  Progress progress);

} // namespace brindlemoth::tablegen
