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

// The length of the first code of the 64 bits `code`.
inline int code_length(const CompressedStream& stream, std::uint64_t code) {
    int n = 0;
    while (code < stream.code_base[n])
        ++n;
    return stream.min_code_length + n;
}

// The symbol that the first `length` bits of `code` stand for. The result can be any number; only
// numbers below symbol_count are symbols.
inline std::uint64_t symbol_number(const CompressedStream& stream, std::uint64_t code, int length) {
    const int n = length - stream.min_code_length;
    return load_le16(stream.code_offsets + 2 * n) + ((code - stream.code_base[n]) >> (64 - length));
}

} // namespace brindlemoth
