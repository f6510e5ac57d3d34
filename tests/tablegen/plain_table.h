// Bytes of table files that no endgame was solved for.
#pragma once

#include "file/table_file.h"
#include "tablebase/probe_board.h"

#include <string>
#include <vector>

namespace brindlemoth {

std::string bytes_of(const tablegen::TableFile& file);

// A WDL file of constant streams: one value for each side that it stores. The men stand in the
// given order, or in the first that is possible.
tablegen::TableFile constant_table(const std::string& signature,
                                   const std::vector<std::uint16_t>& values,
                                   const tablegen::StreamOrder* order = nullptr);

// The men at an index, with White, the first-named side, to move.
ProbeBoard board_at(const tablegen::Walk& walk);

} // namespace brindlemoth
