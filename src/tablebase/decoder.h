// Fetching one value out of a compressed stream. Called by the table probe for every position
// that reaches a table.
#pragma once

#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

// The record of the value at `index`: at least two readable bytes. Returns null when the stream
// leads to a code or symbol without meaning or beyond the end of the file. Requires a stream that
// the mapper has accepted; of the file, reads nothing outside the view.
const std::uint8_t* syzygy_decode(const CompressedStream& stream, std::uint64_t index);

} // namespace brindlemoth
