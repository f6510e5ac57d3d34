// What the rest of the engine knows of the endgame tables: choosing the directories, probing a
// position in the tree, and the move at the root. One thread; syzygy_init() is called only
// between searches.
#pragma once

#include "board/position.h"
#include "tablebase/probe_board.h"

#include <cstdint>

namespace brindlemoth {

// Men of the largest registered table, 0 without tables. Set by syzygy_init().
extern std::uint32_t syzygy_max_men;

// Positions of at most this many men are probed; 0 turns probing off. Whoever sets the path
// copies syzygy_max_men here, and the search reads it.
extern std::int32_t syzygy_probe_limit;

// Replaces all tables by those that the directories of `path` hold, separated by ";". An empty
// path or "<empty>" leaves none. No table is opened for reading its content before a probe needs
// it. Always returns true. Incomplete files are reported on standard error and standard output.
// Ends the process with status 1 if the registry cannot be allocated.
bool syzygy_init(const char* path);

// What the in-out variable `success` of a probe says.
enum : int {
    PROBE_OTHER_SIDE = -1, // within a DTZ probe: the file stores the other side to move
    PROBE_FAILED = 0,      // the value means nothing
    PROBE_GOOD = 1,
    PROBE_GOOD_BY_CAPTURE = 2, // good without a look into a DTZ table
};

// Win, draw and loss; cursed and blessed are those that the fifty-move rule turns into a draw.
enum : int { WDL_LOSS = -2, WDL_BLESSED_LOSS, WDL_DRAW, WDL_CURSED_WIN, WDL_WIN };

// Win, draw or loss for the side to move, from -2 (loss) over -1 (loss saved by the fifty-move
// rule), 0 and 1 (win spoilt by it) to 2 (win), as if the clock stood at 0. `success` is 0 when
// the tables have no answer (the result then means nothing), 1 when they have one, and 2 when
// the value is reached by a capture. Maps a table file on its first use.
int syzygy_wdl(const ProbeBoard& board, int& success);

// Plies to the next capture or pawn move under best play: positive for a win, negative for a
// loss, 0 for a draw; beyond 100 in size where the fifty-move rule spoils the win. `success` is 0
// when the tables have no answer.
int syzygy_dtz(const ProbeBoard& board, int& success);

// The move that the tables choose for the side to move. True with a move other than MOVE_NONE
// when they decide; true with MOVE_NONE when there is no legal move; false when they have no
// answer. Requires no castling rights and at most syzygy_max_men men. The position is unchanged
// afterwards.
bool syzygy_root_move(Position& position, Move& move);

} // namespace brindlemoth
