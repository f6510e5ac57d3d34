// The static evaluation: its start-up, the style, the value of a position, and its trace.
// The search calls evaluate() at nearly every node. Assumes that init_attacks() has run, then
// init_eval_tables() and kpk_init() (eval/kpk.h).
#pragma once

#include "board/position.h"

namespace brindlemoth {

// The piece-square style in force: 0 is PeSTO, 1 is Linear. After a change init_eval_tables()
// must run. A position that was set up earlier keeps the sum of the old tables until it is set up
// again.
extern int eval_style;

// Fills psq_table for eval_style. Called before any position is set up.
void init_eval_tables();

constexpr int MAX_GAME_PHASE = 24;

// From 0, kings and pawns alone, to MAX_GAME_PHASE, all pieces of the starting position.
int game_phase(const Position& position);

// The value of the position in centipawns for the side to move; 0 if a side has no king.
// Reads the pieces, side and psq, and uses the keys to find cached values.
int evaluate(const Position& position);

// Prints the main terms from White's point of view, then the result of evaluate().
void eval_trace(const Position& position);

} // namespace brindlemoth
