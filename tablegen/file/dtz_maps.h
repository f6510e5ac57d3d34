// The value maps of a DTZ stream.
#pragma once

#include "compression/compress.h"
#include "file/table_file.h"

namespace brindlemoth::tablegen {

// Turns raw DTZ values into the values that are stored, and sets the flags and maps of the file
// position.
void map_dtz_values(std::vector<ValueRun>& values, FilePosition& position);

// The compressor stores a single value as a constant, which readers of DTZ files take for 0. Makes
// maps that turn 0 into this value.
void map_constant_dtz(CompressedStream& stream, FilePosition& position);

} // namespace brindlemoth::tablegen
