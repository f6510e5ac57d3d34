// How exposed a king is, as a plain number of centipawns for the middle game.
// evaluate() passes the survey that it has taken; the trace asks without one.
#pragma once

#include "eval/survey.h"

namespace brindlemoth {

// The danger to that colour's king, from 0, safe, to 920. 0 when the colour has no king.
int king_danger(const Position& position, int colour);

template <int colour> int king_danger(const Position& position, const Survey& survey);

} // namespace brindlemoth
