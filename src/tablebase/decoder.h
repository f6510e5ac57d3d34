// Decoding one value of a compressed stream. The table probe calls syzygy_decode() for every
// position that it looks up in a table. The other functions serve the decoder and the code that
// prepares a stream.
#pragma once

#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

// Returns the record of the value at `index`, which has at least two readable bytes. Returns null
// if the compressed data leads to a code or symbol that does not exist, or beyond the end of the
// file. Requires a stream that the mapper has accepted. Reads nothing outside the mapped view.
const std::uint8_t* syzygy_decode(const CompressedStream& stream, std::uint64_t index);

// The length in bits of the first code in the left-aligned bits `code`. Shorter codes are larger.
inline int code_length(const CompressedStream& stream, std::uint64_t code) {
    int n = 0;
    while (code < stream.code_base[n])
        ++n;
    return stream.min_code_length + n;
}

// The symbol number of the first `length` bits of `code`, where `length` is their code_length(). In
// a damaged file it can be symbol_count or more, and then the symbol does not exist.
inline std::uint64_t symbol_number(const CompressedStream& stream, std::uint64_t code, int length) {
    const int n = length - stream.min_code_length;
    return load_le16(stream.code_offsets + 2 * n) + ((code - stream.code_base[n]) >> (64 - length));
}

} // namespace brindlemoth
