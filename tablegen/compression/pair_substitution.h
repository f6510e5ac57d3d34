// The dictionary of a compressed stream, by Re-Pair: sequences of values become shorter sequences
// of symbols.
#pragma once

#include "compression/compress.h"

#include <cstdint>
#include <vector>

namespace brindlemoth::tablegen {

struct Substitution {
    std::vector<Symbol> symbols; // parts always come before the pairs made of them
    std::vector<std::uint16_t> sequence;
};

// Requires at least one run. Makes at most settings.max_symbols symbols.
Substitution substitute_pairs(std::vector<ValueRun> runs, const CompressionSettings& settings,
                              Progress progress);

} // namespace brindlemoth::tablegen
