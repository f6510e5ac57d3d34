// The proof that a table is read right: the value of a position follows from those of its moves.
#pragma once

#include <string>

namespace brindlemoth {

// Checks every position of the signature, with either side as White, against its moves: value and
// distance. The genuine tables must be in force.
void check_consistency(const std::string& signature);

} // namespace brindlemoth
