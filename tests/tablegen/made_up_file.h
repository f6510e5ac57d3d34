// Table files with values that no chess position has, to lead a reader through every corner of the
// format, and the check that a reader finds each value at its place.
#pragma once

#include "file/table_file.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace brindlemoth {

enum class Values {
    CONSTANT,  // one value everywhere
    LONG_RUNS, // runs of thousands: symbols of up to 256 values
    SHORT_RUNS,
    NOISE,  // every value as likely: short blocks, few pairs
    SKEWED, // each value half as likely as the one before: the longest codes
};

// What one stream of a made-up file is like.
struct MadeUpStream {
    Values values = Values::NOISE;
    std::uint8_t dtz_flags = 0; // with DTZ_MAPPED the maps are made up too
    tablegen::CompressionSettings settings;
};

struct MadeUpFile {
    std::string signature;
    tablegen::FileKind kind = tablegen::FileKind::WDL;
    bool split = true;
    // By file position; the last one serves the rest.
    std::vector<MadeUpStream> streams;
    std::uint64_t every = 1; // read back every so many indices
};

struct ReadBack {
    std::uint64_t values = 0;
    std::uint64_t engine_wrong = 0;
    std::uint64_t judge_wrong = 0; // by the reader that `tablegen --verify` uses
    std::string first_wrong;
    // What the file holds, over all streams, so that a test can tell that its case arose.
    std::uint64_t blocks = 0;
    int longest_code = 0;
    std::uint64_t walks_back = 0; // index entries whose stretch begins in an earlier block
    std::uint64_t walks_on = 0;   // index entries whose stretch ends in a later block
    int later_turns = 0;          // streams whose leading group does not vary fastest
};

// Writes the file, and what must lie beside it, into a directory of its own, reads it with both
// readers from both colours' point of view, and counts what is wrong.
ReadBack write_and_read(const MadeUpFile& made_up);

} // namespace brindlemoth
