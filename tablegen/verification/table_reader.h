// Reads table files of either maker, as a check on them: written apart from the writer, and from
// the engine's reader, and trusting nothing that it reads. The file's bytes are held in memory.
#pragma once

#include "rules/signature.h"
#include "solver/layout.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brindlemoth::tablegen {

// n over k, 0 when n is less than k.
constexpr std::uint64_t binomial(std::uint64_t n, std::uint64_t k) {
    if (n < k)
        return 0;
    std::uint64_t result = 1;
    for (std::uint64_t i = 0; i < k; ++i)
        result = result * (n - i) / (i + 1);
    return result;
}

struct ReaderGroup {
    std::size_t first;
    std::size_t size;
    std::uint64_t multiplier;
};

struct ReaderStream {
    std::uint8_t flags = 0;
    std::vector<std::uint8_t> piece; // code of each man, in the stream's order
    std::vector<ReaderGroup> groups;
    std::uint64_t positions = 0;
    bool constant = false;
    int constant_value = 0;
    int block_size_log2 = 0;
    int index_bits = 0;
    int min_code_length = 0;
    std::vector<std::uint64_t> code_base; // left-aligned, by code length
    std::vector<std::size_t> first_symbol;
    struct Pair {
        std::size_t left;
        std::size_t right;
        std::size_t values; // that it stands for
    };
    std::vector<Pair> symbols;
    std::size_t index_table = 0; // offsets in the file
    std::size_t block_lengths = 0;
    std::size_t block_length_count = 0;
    std::size_t blocks = 0;
    std::size_t block_count = 0;
    std::array<std::vector<int>, 4> maps;
};

struct TableReader {
    Signature signature;
    bool dtz = false;
    bool pawns = false;
    std::vector<std::uint8_t> bytes;
    std::size_t sides = 1;             // streams of each file position
    std::vector<ReaderStream> streams; // file position by file position
};

// Reads a file and checks that its parts fit together and, where this generator wrote it, that
// its checksum is right. The text says what is wrong with it; it is empty when all is well.
std::string open_table(const std::string& path, const Signature& signature, bool dtz,
                       TableReader& reader);

// The value stored for an index of a stream, or nothing where the data are damaged.
std::optional<int> value_at(const TableReader& reader, const ReaderStream& stream,
                            std::uint64_t index);

// The stream that holds a position and its index there. Nothing if a DTZ file stores the other
// side to move. The layout names the men; it must be of the reader's signature.
struct StreamIndex {
    const ReaderStream* stream;
    std::uint64_t index;
};
std::optional<StreamIndex> find_position(const TableReader& reader, const Layout& layout,
                                         const Placement& placement, Side side);

} // namespace brindlemoth::tablegen
