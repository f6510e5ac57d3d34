// Reads a WDL file back to a table in memory. Where the best capture is as good as the position, a
// file may hold any lower value, and of the images of a position it may hold one: both are
// completed here.
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
