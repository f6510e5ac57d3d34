// The WDL values of a word: of a placement with the black king on each square.
//
// Values are those of table files. A WDL value runs from -2 (loss) over -1 (blessed loss: the
// fifty-move rule makes it a draw), 0, 1 (cursed win: the rule makes it a draw) to 2 (win).
#pragma once

#include "rules/geometry.h"

#include <array>

namespace brindlemoth::tablegen {

// Three bits for each square of the black king, low bits first. The number is the value plus 3;
// 0 means that the position is not legal, and 6 is stalemate where that is told from other draws.
using WordValues = std::array<Squares, 3>;

// By value plus 2: the squares where the value is as much or more. So the first are all squares
// with a value.
using AtLeast = std::array<Squares, 5>;

inline WordValues pack(const AtLeast& values) {
    return {(values[0] & ~values[1]) | (values[2] & ~values[3]) | values[4], values[1] & ~values[3],
            values[3]};
}

inline AtLeast unpack(const WordValues& values) {
    const auto& [low, middle, high] = values;
    const Squares legal = low | middle | high;
    return {legal, middle | high, (middle & low) | high, high & ~middle, high & ~middle & low};
}

} // namespace brindlemoth::tablegen
