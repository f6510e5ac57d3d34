// The interface of the endgame tables: setting the directories, probing a position in the tree, and
// choosing the move at the root. Everything runs on one thread. syzygy_init() is called only
// between searches.
#pragma once

#include "board/position.h"
#include "tablebase/probe_board.h"

#include <cstdint>

namespace brindlemoth {

// The number of men of the largest registered table, 0 without tables. Set by syzygy_init().
extern std::uint32_t syzygy_max_men;

// The search probes positions with at most this many men; 0 turns probing off. The handler of the
// option SyzygyPath copies syzygy_max_men to it.
extern std::int32_t syzygy_probe_limit;

// Replaces all tables by those in the directories of `path`, separated by ";". An empty path or
// "<empty>" leaves no tables. Always returns true. The content of a table is read only when a probe
// needs it. Incomplete files are reported on standard error and standard output. Ends the process
// with status 1 if the registry cannot be allocated.
bool syzygy_init(const char* path);

// Values of the in-out parameter `success` of a probe.
enum : int {
    PROBE_OTHER_SIDE = -1, // inside a DTZ probe only: the file stores the other side to move
    PROBE_FAILED = 0,      // the returned value means nothing
    PROBE_GOOD = 1,
    PROBE_GOOD_BY_CAPTURE = 2, // the value is that of a capture, so no DTZ table is needed
};

// WDL values for the side to move. The fifty-move rule turns a cursed win or blessed loss into a
// draw.
enum : int { WDL_LOSS = -2, WDL_BLESSED_LOSS, WDL_DRAW, WDL_CURSED_WIN, WDL_WIN };

// Returns the WDL value of a position whose fifty-move clock is taken as 0. Sets `success` to
// PROBE_GOOD, to PROBE_GOOD_BY_CAPTURE, or to PROBE_FAILED if the tables have no answer. The first
// probe of a table maps its file and allocates its decoders.
int syzygy_wdl(const ProbeBoard& board, int& success);

// Returns the number of plies to the next zeroing move (capture or pawn move) under best play:
// positive for a win, negative for a loss, 0 for a draw. Its absolute value is above 100 for a
// cursed win or a blessed loss. Sets `success` to PROBE_FAILED if the tables have no answer.
int syzygy_dtz(const ProbeBoard& board, int& success);

// Chooses a move by the tables. Returns true and sets `move` if they have an answer; `move` is
// MOVE_NONE if there is no legal move. Returns false if they have none. Requires no castling rights
// and at most syzygy_max_men men.
bool syzygy_root_move(const Position& position, Move& move);

} // namespace brindlemoth
