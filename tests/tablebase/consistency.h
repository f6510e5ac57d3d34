// The proof that a table is read right: the value of a position follows from those of its moves.
#pragma once

#include <string>

namespace brindlemoth {

// Checks every position of the signature, up to reflections of the board, against its moves: value
// and distance. Also that one of the position's images has the same value, with the colours
// exchanged for half of them. Distances may differ by `tolerance` plies: a table that counts moves
// instead of plies has lost the last bit of some. The genuine tables must be in force.
void check_consistency(const std::string& signature, int tolerance);

} // namespace brindlemoth
