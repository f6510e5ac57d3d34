// Terms that rate the knights, bishops, rooks and queens of one colour. Each is good for that
// colour: the caller subtracts Black's from White's. None depends on the side to move or style.
// evaluate() passes the survey that it has taken; the trace asks for single terms without one.
#pragma once

#include "eval/survey.h"

namespace brindlemoth {

constexpr Score BISHOP_PAIR = S(22, 30); // once, for two or more bishops on whatever squares

// How many squares each piece reaches that no enemy pawn attacks and no own king or pawn holds.
Score evaluate_mobility(const Position& position, int colour);

// Knights and bishops where no enemy pawn can ever attack them, and the own blocked pawns that
// each bishop cannot defend.
Score evaluate_outposts(const Position& position, int colour);

// Rooks on files without own pawns, and on the seventh rank.
Score evaluate_rooks(const Position& position, int colour);

// Minor pieces attacking rooks and queens, pawns attacking minor pieces and rooks.
Score evaluate_threats(const Position& position, int colour);

template <int us> Score outposts(const Position& position, const Survey& survey);
template <int us> Score rooks(const Position& position, const Survey& survey);
template <int us> Score threats(const Position& position, const Survey& survey);

} // namespace brindlemoth
