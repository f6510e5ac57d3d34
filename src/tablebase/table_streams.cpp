#include "tablebase/decoder.h"
#include "tablebase/table_setup.h"

#include <algorithm>
#include <new>

namespace brindlemoth {

namespace {

constexpr std::uint8_t STREAM_CONSTANT = 128; // bit of the stream flags
constexpr std::uint64_t BLOCK_ALIGNMENT = 64;
constexpr int MAX_CODE_LENGTH = 63; // the decoder has a register of 64 bits
constexpr int MAX_INDEX_BITS = 62;  // the decoder counts the values of an index entry with a sign
constexpr int MAX_BLOCK_SIZE_LOG2 = 31;
constexpr std::uint32_t MAX_SYMBOLS = 4096;
constexpr std::uint32_t MAX_SYMBOL_LENGTH = 255; // number of values of a symbol minus 1

// Offsets in the fixed part of a stream header, counted from the byte after the flags.
enum : int {
    BLOCK_SIZE_LOG2 = 0,
    INDEX_BITS = 1,
    EXTRA_BLOCK_LENGTHS = 2,
    BLOCK_COUNT = 3, // four bytes
    MAX_LENGTH = 7,
    MIN_LENGTH = 8,
    STREAM_HEAD_BYTES = 9,
};

// Sets the length of a symbol and of all its parts, and returns it. The symbol is marked as broken
// while its parts are visited, so a symbol that contains itself stays broken.
std::uint32_t set_symbol_length(CompressedStream& stream, std::uint32_t symbol) {
    if (symbol >= stream.symbol_count)
        return BROKEN_SYMBOL;
    const std::uint8_t* const record = stream.symbol_records + SYMBOL_BYTES * symbol;
    std::uint16_t& length = stream.symbol_lengths[symbol];
    if (length != 0 || symbol_right(record) == LEAF_MARK)
        return length;
    length = BROKEN_SYMBOL;
    const std::uint32_t whole = set_symbol_length(stream, symbol_left(record)) +
                                set_symbol_length(stream, symbol_right(record)) + 1;
    if (whole <= MAX_SYMBOL_LENGTH)
        length = static_cast<std::uint16_t>(whole);
    return length;
}

// Sets the smallest code of each length, left-aligned in 64 bits. Longer codes are smaller.
void set_code_base(std::uint64_t* base, const std::uint8_t* code_offsets, int min_length,
                   int lengths) {
    const auto first_symbol = [code_offsets](int i) { return load_le16(code_offsets + 2 * i); };
    base[lengths - 1] = 0;
    for (int i = lengths - 2; i >= 0; --i)
        base[i] = (base[i + 1] + first_symbol(i) - first_symbol(i + 1)) / 2;
    for (int i = 0; i < lengths; ++i)
        base[i] <<= 64 - (min_length + i);
}

// Sets the code runs. CODE_RUN_BITS bits are enough to decode a code of up to that length, because
// code_base of these lengths has only zeros below them. This holds for damaged files, too.
void set_code_runs(const CompressedStream& stream) {
    for (std::uint64_t pattern = 0; pattern < CODE_RUNS; ++pattern) {
        std::uint64_t code = pattern << (64 - CODE_RUN_BITS);
        CodeRun run{0, 0, 0};
        while (true) {
            const int length = code_length(stream, code);
            if (run.bits + length > CODE_RUN_BITS)
                break;
            if (run.bits == 0)
                run.first_length = static_cast<std::uint8_t>(length);
            const std::uint64_t number = symbol_number(stream, code, length);
            if (number >= stream.symbol_count || stream.symbol_lengths[number] == BROKEN_SYMBOL)
                break;
            run.values = static_cast<std::uint16_t>(run.values + stream.symbol_lengths[number] + 1);
            run.bits = static_cast<std::uint8_t>(run.bits + length);
            code <<= length;
        }
        stream.code_runs[pattern] = run;
    }
}

// Allocates one heap block of zeros for the record and its three arrays. Null if there is no
// memory.
CompressedStream* allocate_stream(int lengths, std::uint64_t symbols) {
    const std::size_t code_base_bytes = static_cast<std::size_t>(lengths) * sizeof(std::uint64_t);
    const std::size_t code_run_bytes = lengths == 0 ? 0 : CODE_RUNS * sizeof(CodeRun);
    const std::size_t bytes = sizeof(CompressedStream) + code_base_bytes + code_run_bytes +
                              symbols * sizeof(std::uint16_t);
    auto* const block = static_cast<std::uint8_t*>(operator new(bytes, std::nothrow));
    if (block == nullptr)
        return nullptr;
    std::fill(block, block + bytes, std::uint8_t{0});
    auto* const stream = new (block) CompressedStream{};
    stream->code_base = reinterpret_cast<std::uint64_t*>(block + sizeof(CompressedStream));
    stream->code_runs =
        reinterpret_cast<CodeRun*>(block + sizeof(CompressedStream) + code_base_bytes);
    stream->symbol_lengths = reinterpret_cast<std::uint16_t*>(block + sizeof(CompressedStream) +
                                                              code_base_bytes + code_run_bytes);
    return stream;
}

SetupResult read_constant_stream(TableSetup& setup, StreamSetup& stream) {
    const std::uint8_t* const value = take(setup.file, 1);
    if (value == nullptr)
        return SetupResult::CORRUPTED;
    CompressedStream* const decoder = allocate_stream(0, 0);
    if (decoder == nullptr)
        return SetupResult::OUT_OF_MEMORY;
    stream.encoding->decoder = decoder;
    decoder->constant_value[0] = setup.kind == KIND_WDL ? *value : std::uint8_t{0};
    return SetupResult::DONE;
}

// Reads a stream header and builds the decoder. The flags byte comes first.
SetupResult read_stream_header(TableSetup& setup, StreamSetup& stream) {
    FileReader& file = setup.file;
    const std::uint8_t* const flags = take(file, 1);
    if (flags == nullptr)
        return SetupResult::CORRUPTED;
    stream.flags = *flags;
    if ((stream.flags & STREAM_CONSTANT) != 0)
        return read_constant_stream(setup, stream);

    const std::uint8_t* const head = take(file, STREAM_HEAD_BYTES);
    if (head == nullptr)
        return SetupResult::CORRUPTED;
    const int block_size_log2 = head[BLOCK_SIZE_LOG2];
    const int index_bits = head[INDEX_BITS];
    const std::uint64_t blocks = load_le32(head + BLOCK_COUNT);
    const int max_length = head[MAX_LENGTH];
    const int min_length = head[MIN_LENGTH];
    if (block_size_log2 > MAX_BLOCK_SIZE_LOG2 || index_bits == 0 || index_bits > MAX_INDEX_BITS ||
        min_length == 0 || min_length > max_length || max_length > MAX_CODE_LENGTH)
        return SetupResult::CORRUPTED;

    const int lengths = max_length - min_length + 1;
    const std::uint8_t* const code_offsets = take(file, 2 * static_cast<std::uint64_t>(lengths));
    const std::uint8_t* const symbol_count = take(file, 2);
    if (code_offsets == nullptr || symbol_count == nullptr)
        return SetupResult::CORRUPTED;
    const std::uint32_t symbols = load_le16(symbol_count);
    if (symbols > MAX_SYMBOLS)
        return SetupResult::CORRUPTED;
    const std::uint8_t* const symbol_records = take(file, SYMBOL_BYTES * symbols + symbols % 2);
    if (symbol_records == nullptr)
        return SetupResult::CORRUPTED;

    CompressedStream* const decoder = allocate_stream(lengths, symbols);
    if (decoder == nullptr)
        return SetupResult::OUT_OF_MEMORY;
    stream.encoding->decoder = decoder;
    set_code_base(decoder->code_base, code_offsets, min_length, lengths);
    decoder->code_offsets = code_offsets;
    decoder->symbol_records = symbol_records;
    decoder->block_size_log2 = static_cast<std::uint8_t>(block_size_log2);
    decoder->index_bits = static_cast<std::uint8_t>(index_bits);
    decoder->min_code_length = static_cast<std::uint8_t>(min_length);
    decoder->block_count = blocks;
    decoder->block_length_count = blocks + head[EXTRA_BLOCK_LENGTHS];
    decoder->index_count = (stream.positions - 1 + (std::uint64_t{1} << index_bits)) >> index_bits;
    decoder->symbol_count = symbols;
    decoder->view_end = file.view + file.size;

    for (std::uint32_t symbol = 0; symbol < symbols; ++symbol)
        set_symbol_length(*decoder, symbol);
    set_code_runs(*decoder);
    return SetupResult::DONE;
}

// Reads the four value maps of one file position, each a length and that many entries. Stores where
// their first entries are, in map entries from `maps`.
bool read_value_maps(FileReader& file, const std::uint8_t* maps, bool wide,
                     std::uint32_t offsets[VALUE_MAPS]) {
    const std::uint64_t width = wide ? 2 : 1;
    if (wide && !align(file, 2))
        return false;
    for (int i = 0; i < VALUE_MAPS; ++i) {
        const std::uint8_t* const length = take(file, width);
        if (length == nullptr)
            return false;
        const std::uint64_t entries = wide ? load_le16(length) : *length;
        const std::uint64_t offset = static_cast<std::uint64_t>(length + width - maps) / width;
        if (take(file, entries * width) == nullptr)
            return false;
        offsets[i] = static_cast<std::uint32_t>(offset);
    }
    return true;
}

bool read_all_value_maps(TableSetup& setup) {
    TableEntry& entry = setup.entry;
    entry.dtz_map = setup.file.view + setup.file.offset;
    for (int position = 0; position < setup.stream_count; ++position) {
        const std::uint8_t flags = setup.streams[position].flags;
        entry.dtz_flags[position] = flags;
        if ((flags & DTZ_MAPPED) != 0 &&
            !read_value_maps(setup.file, entry.dtz_map, (flags & DTZ_WIDE_MAPS) != 0,
                             entry.dtz_map_offsets[position]))
            return false;
    }
    return align(setup.file, HEADER_ALIGNMENT);
}

// Steps over a section of `count` entries and returns its start. If the file ends inside the
// section, sets `count` to the number of complete entries.
const std::uint8_t* take_entries(FileReader& file, std::uint64_t entry_bytes,
                                 std::uint64_t& count) {
    const std::uint64_t rest = file.size - file.offset;
    const std::uint8_t* const start = file.view + file.offset;
    if (count > rest / entry_bytes) {
        count = rest / entry_bytes;
        file.offset = file.size;
    } else {
        file.offset += count * entry_bytes;
    }
    return start;
}

// Assigns the index tables, block-length tables and blocks of all streams. These sections of a
// constant stream are empty. A file that ends too early is used as far as it goes.
void assign_sections(TableSetup& setup) {
    FileReader& file = setup.file;
    StreamSetup* const streams_end = setup.streams + setup.stream_count;
    for (StreamSetup* s = setup.streams; s != streams_end; ++s) {
        CompressedStream& stream = *s->encoding->decoder;
        stream.index_table = take_entries(file, INDEX_ENTRY_BYTES, stream.index_count);
    }
    for (StreamSetup* s = setup.streams; s != streams_end; ++s) {
        CompressedStream& stream = *s->encoding->decoder;
        stream.block_lengths = take_entries(file, BLOCK_LENGTH_BYTES, stream.block_length_count);
    }
    for (StreamSetup* s = setup.streams; s != streams_end; ++s) {
        CompressedStream& stream = *s->encoding->decoder;
        if (!align(file, BLOCK_ALIGNMENT))
            file.offset = file.size;
        // Not stored: the decoder may read from a last block that is incomplete.
        std::uint64_t complete_blocks = stream.block_count;
        stream.blocks =
            take_entries(file, std::uint64_t{1} << stream.block_size_log2, complete_blocks);
    }
}

} // namespace

SetupResult read_streams(TableSetup& setup) {
    for (int i = 0; i < setup.stream_count; ++i) {
        const SetupResult result = read_stream_header(setup, setup.streams[i]);
        if (result != SetupResult::DONE)
            return result;
    }
    if (setup.kind == KIND_DTZ && !read_all_value_maps(setup))
        return SetupResult::CORRUPTED;
    assign_sections(setup);
    return SetupResult::DONE;
}

} // namespace brindlemoth
