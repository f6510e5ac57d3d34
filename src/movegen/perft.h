// Perft: counting the leaves of the legal move tree, the self-test of the board code.
// None of this polls the input or can be interrupted.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

// One position of the suite with its known count.
struct PerftCase {
    const char* fen;
    int depth;
    std::uint64_t expected;
    const char* label;
};

constexpr int PERFT_CASE_COUNT = 6;
extern const PerftCase perft_cases[PERFT_CASE_COUNT];

// Number of leaves at depth >= 0. The position is unchanged afterwards.
std::uint64_t perft(Position& position, int depth);

// Prints the count under each legal move and the total. Requires depth >= 1; a depth beyond the
// room on the undo stack counts as that.
void perft_divide(Position& position, int depth);

// Runs perft_cases and prints a line for each and the number passed.
void perft_suite();

} // namespace brindlemoth
