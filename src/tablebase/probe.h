// Reading one value from one table. syzygy_wdl() and syzygy_dtz() (tablebase/syzygy.h) combine such
// values with the values of captures. The root probe uses the distances of zeroing moves.
#pragma once

#include "tablebase/probe_board.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_entry.h"

namespace brindlemoth {

// By WDL value - WDL_LOSS: the distance of a position in which the best move is a zeroing move.
constexpr int wdl_to_dtz[5] = {-1, -101, 0, 101, 1};

// Reads one table for the board itself, and maps its file on first use. With KIND_WDL returns the
// WDL value. With KIND_DTZ requires the WDL value `wdl` of the position, and returns the absolute
// distance minus that of a zeroing move. Sets `success` to PROBE_FAILED or PROBE_OTHER_SIDE if
// there is no value, and otherwise does not change it.
int syzygy_probe_table(const ProbeBoard& board, int wdl, int& success, TableKind kind);

} // namespace brindlemoth
