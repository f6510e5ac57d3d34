// Zeroing moves: captures and pawn moves, which reset the count of the fifty-move rule. They lead
// to other tables or to other pawn squares of the same one. All functions take a word: every square
// of the black king at once, so the square of that king in a placement is ignored.
#pragma once

#include "solver/table.h"

namespace brindlemoth::tablegen {

// The squares of all men but the black king.
Squares fixed_men(const Layout& layout, const Placement& placement);

// Where the black king can stand so that the position is legal with that side to move.
Squares legal_squares(const Layout& layout, const Placement& placement, Side side);

// The best values that the side to move reaches by legal captures other than en passant, and by
// legal pawn moves without a capture, promotions among them. The values of the positions after the
// moves must be known.
AtLeast best_captures(const Table& table, const Placement& placement, Side side);
AtLeast best_pawn_moves(const Table& table, const Placement& placement, Side side);

} // namespace brindlemoth::tablegen
