// Reads table files of any maker, as a check on them: written apart from the engine's reader, and
// trusting nothing that it reads. The file's bytes are held in memory.
#pragma once

#include "file/table_file.h"
#include "numbering/numbering.h"
#include "rules/signature.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace brindlemoth::tablegen {

struct ReaderStream {
    std::uint8_t flags = 0;
    Numbering numbering;
    bool constant = false;
    int constant_value = 0;
    int block_size_log2 = 0;
    int index_bits = 0;
    int min_code_length = 0;
    std::vector<std::uint64_t> code_base; // left-aligned, by code length
    std::vector<std::size_t> first_symbol;
    std::vector<std::vector<std::uint16_t>> symbols; // the values that each stands for
    std::size_t index_table = 0;                     // offsets in the file
    std::size_t block_lengths = 0;
    std::size_t block_length_count = 0;
    std::size_t blocks = 0;
    std::size_t block_count = 0;
    std::array<std::vector<int>, 4> maps;
};

struct TableReader {
    Signature signature;
    FileKind kind = FileKind::WDL;
    bool own = false; // made by this generator, and its checksum is right
    std::vector<std::uint8_t> bytes;
    std::size_t sides = 1;             // streams of each file position
    std::vector<ReaderStream> streams; // file position by file position
};

// Reads a file and checks that its parts fit together: headers, sections, the index table, and the
// checksum where this generator wrote it. The text says what is wrong; it is empty when all is
// well.
std::string open_table(const std::string& path, const Signature& signature, FileKind kind,
                       TableReader& reader);

// Calls visit(values) for each block of a stream, or each stretch of a constant one, until all
// indices have had their value. False where the data are damaged.
using VisitValues = std::function<void(std::span<const std::uint16_t>)>;
bool read_values(const TableReader& reader, const ReaderStream& stream, const VisitValues& visit);

} // namespace brindlemoth::tablegen
