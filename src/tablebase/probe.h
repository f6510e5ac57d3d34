// One table read, and the capture search above it. syzygy_wdl() and syzygy_dtz()
// (tablebase/syzygy.h) are made of these; the root probe uses the scale of distances.
#pragma once

#include "tablebase/probe_board.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_entry.h"

namespace brindlemoth {

// The distance that a WDL value stands for right before a zeroing move, by value + 2.
constexpr int wdl_to_dtz[5] = {-1, -101, 0, 101, 1};

// Reads one table for the board as it stands: the WDL value, or with KIND_DTZ the distance of a
// position whose value is `wdl`, unsigned and without its last ply. Sets `success` to
// PROBE_FAILED or PROBE_OTHER_SIDE, and otherwise leaves it alone. Maps the file if need be.
int syzygy_probe_table(const ProbeBoard& board, int wdl, int& success, TableKind kind);

// The WDL value within (alpha, beta) by captures and the table. Sets `success` to PROBE_FAILED on
// failure.
int syzygy_capture_search(const ProbeBoard& board, int alpha, int beta, int& success);

} // namespace brindlemoth
