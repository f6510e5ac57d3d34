// The face of the static evaluation: start-up, the style, the value of a position, and its trace.
// The search calls evaluate() at nearly every node; all else here belongs to start-up and shell.
// Assumes that init_attacks() has run, then init_eval_tables() and kpk_init().
#pragma once

#include "board/position.h"

namespace brindlemoth {

// The piece-square style in force: 0 is PeSTO, 1 is Linear. After a change init_eval_tables()
// must run; positions set up earlier keep the sum of the old tables until they are set up anew.
extern int eval_style;

// Fills psq_table for eval_style. Called before any position is set up.
void init_eval_tables();

// Solves king and pawn against king. Needs the attack tables.
void kpk_init();

constexpr int MAX_GAME_PHASE = 24;

// From 0, kings and pawns alone, to MAX_GAME_PHASE, all the pieces of the starting position.
int game_phase(const Position& position);

// The value of the position in centipawns for the side to move; 0 when a side has no king.
// Reads the pieces, side, psq and pawn_key; key says where a value from before may be kept. The
// position is unchanged afterwards.
int evaluate(const Position& position);

// Prints the main terms from White's point of view, then the result of evaluate().
void eval_trace(const Position& position);

} // namespace brindlemoth
