// The score scale of the search: signed centipawns from the side to move's view.
#pragma once

namespace brindlemoth {

// The deepest ply: a node there returns its static score, and no line is longer.
constexpr int MAX_PLY = 128;

constexpr int DRAW_SCORE = 0;
constexpr int MATE_BOUND = 30000; // a score s is mate-range when s >= this or s <= its negative
constexpr int MATE_VALUE = 31000; // checkmated at ply p scores p - MATE_VALUE
constexpr int SCORE_INFINITE = 32000;
constexpr int SCORE_NONE = 32001; // no score: static_eval in check, hash score without an entry

// A win by the endgame tables lies inside the mate range, below a mate at the deepest ply.
constexpr int TB_WIN_SCORE = MATE_VALUE - MAX_PLY - 1;
constexpr int TB_CURSED_WIN_SCORE = 1;
constexpr int TB_BLESSED_LOSS_SCORE = -1;

} // namespace brindlemoth
