#include "tablebase/table_file.h"

#include "platform/file_mapping.h"
#include "tablebase/decoder.h"
#include "tablebase/position_index.h"
#include "tablebase/probe_board.h"
#include "tablebase/registry.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace brindlemoth {

namespace {

constexpr std::uint32_t magic_numbers[KIND_COUNT] = {0x5D23E871, 0x88AC504B, 0xA50C66D7};
constexpr const char* extensions[KIND_COUNT] = {".rtbw", ".rtbm", ".rtbz"};
constexpr int first_piece_encoding[KIND_COUNT] = {0, 2, 4};
constexpr int first_pawn_encoding[KIND_COUNT] = {0, 8, 20};

constexpr std::uint8_t FILE_SPLIT = 1;        // bit of the file flags
constexpr std::uint8_t STREAM_CONSTANT = 128; // bit of the stream flags
constexpr std::uint64_t BLOCK_ALIGNMENT = 64;
constexpr int MAX_CODE_LENGTH = 63; // the decoder has a register of 64 bits
constexpr int MAX_INDEX_BITS = 62;  // and counts values of a stretch with a sign
constexpr int MAX_BLOCK_SIZE_LOG2 = 31;
constexpr std::uint32_t MAX_SYMBOLS = 4096;
constexpr std::uint64_t LEAST_FILE_SIZE = 16;
constexpr std::uint32_t MAX_SYMBOL_LENGTH = 255; // values of a symbol less 1 are one byte
constexpr int NO_TURN = 15;

// A file being read from its start; take() never leaves it.
struct FileReader {
    const std::uint8_t* view;
    std::uint64_t size;
    std::uint64_t offset;
};

// The next bytes, or null if the file has fewer.
const std::uint8_t* take(FileReader& file, std::uint64_t bytes) {
    if (bytes > file.size - file.offset)
        return nullptr;
    const std::uint8_t* const start = file.view + file.offset;
    file.offset += bytes;
    return start;
}

bool align(FileReader& file, std::uint64_t unit) {
    const std::uint64_t rest = file.offset % unit;
    return rest == 0 || take(file, unit - rest) != nullptr;
}

// One stream on its way through the file. The streams stand by file position and then by side;
// `encoding` receives the decoder.
struct StreamSetup {
    SideEncoding* encoding;
    std::uint64_t positions;
    std::uint8_t flags;
};

struct TableSetup {
    TableEntry& entry;
    TableKind kind;
    int counts[16]; // men of the signature by piece code
    FileReader file;
    StreamSetup streams[2 * PAWN_FILE_POSITIONS];
    int stream_count;
};

// --- The order of men ---

// The men must be those of the signature, with all men of a kind side by side, since their squares
// are collected kind by kind.
bool order_fits_signature(const SideEncoding& encoding, const TableSetup& setup) {
    int left[16];
    std::copy(setup.counts, setup.counts + 16, left);
    for (int i = 0; i < setup.entry.men;) {
        const int code = encoding.piece_order[i];
        const int count = left[code];
        if (count == 0)
            return false;
        for (const int end = i + count; i < end; ++i)
            if (encoding.piece_order[i] != code)
                return false;
        left[code] = 0;
    }
    return true;
}

// The first groups must be what the index formulas take them for.
bool leading_men_fit(const SideEncoding& encoding, const TableSetup& setup) {
    const TableEntry& entry = setup.entry;
    const std::uint8_t* const order = encoding.piece_order;
    if (entry.has_pawns != 0) {
        if ((order[0] & 7) != PROBE_PAWN || setup.counts[order[0]] != entry.lead_pawns)
            return false;
        // The squares of the leading pawns are collected by the first encoding of the file.
        if (order[0] != setup.streams[0].encoding->piece_order[0])
            return false;
        return entry.other_pawns == 0 || (order[entry.lead_pawns] & 7) == PROBE_PAWN;
    }
    if (entry.two_king_scheme != 0)
        return (order[0] & 7) == PROBE_KING && (order[1] & 7) == PROBE_KING;
    return std::all_of(order, order + 3, [&setup](int code) { return setup.counts[code] == 1; });
}

// Sets up how one stream numbers its positions. `header` is the piece header of its file
// position, `shift` selects the nibble of its side. False if the header makes no sense.
bool set_up_encoding(TableSetup& setup, StreamSetup& stream, const std::uint8_t* header, int shift,
                     int file_position) {
    const TableEntry& entry = setup.entry;
    SideEncoding& encoding = *stream.encoding;
    const bool two_pawn_groups = entry.has_pawns != 0 && entry.other_pawns > 0;
    const int men = entry.men;
    const auto nibble = [header, shift](int i) { return (header[i] >> shift) & 0x0F; };

    std::fill(encoding.multiplier, encoding.multiplier + MAX_TABLE_MEN, 0);
    std::fill(encoding.group_size, encoding.group_size + MAX_TABLE_MEN, std::uint8_t{0});
    const int first_man = two_pawn_groups ? 2 : 1;
    for (int i = 0; i < men; ++i)
        encoding.piece_order[i] = static_cast<std::uint8_t>(nibble(first_man + i));
    if (!order_fits_signature(encoding, setup) || !leading_men_fit(encoding, setup))
        return false;

    // The groups: leading pawns or leading men, other pawns, then runs of like men.
    int grouped = entry.has_pawns != 0 ? entry.lead_pawns : entry.two_king_scheme != 0 ? 2 : 3;
    encoding.group_size[0] = static_cast<std::uint8_t>(grouped);
    if (two_pawn_groups) {
        encoding.group_size[grouped] = entry.other_pawns;
        grouped += entry.other_pawns;
    }
    for (int i = grouped; i < men;) {
        std::uint8_t& size = encoding.group_size[i];
        for (const int kind = encoding.piece_order[i]; i < men && encoding.piece_order[i] == kind;
             ++i)
            ++size;
    }

    // The weights: the header says in which turn the first group, and the other pawns, enter.
    const int order = nibble(0);
    const int order2 = two_pawn_groups ? nibble(1) : NO_TURN;
    bool first_group_placed = false;
    bool other_pawns_placed = !two_pawn_groups;
    std::uint64_t factor = 1;
    int next = grouped;
    int free_squares = 64 - grouped;
    for (int turn = 0; next < men || turn == order || turn == order2; ++turn) {
        if (turn == order) {
            encoding.multiplier[0] = factor;
            factor *= entry.has_pawns != 0 ? pawn_factor[entry.lead_pawns - 1][file_position]
                      : entry.two_king_scheme != 0 ? TWO_KING_PLACEMENTS
                                                   : THREE_MEN_PLACEMENTS;
            first_group_placed = true;
        } else if (turn == order2) {
            encoding.multiplier[entry.lead_pawns] = factor;
            factor *= binomial[entry.other_pawns][48 - entry.lead_pawns];
            other_pawns_placed = true;
        } else {
            const int size = encoding.group_size[next];
            encoding.multiplier[next] = factor;
            factor *= binomial[size][free_squares];
            free_squares -= size;
            next += size;
        }
    }
    stream.positions = factor;
    return first_group_placed && other_pawns_placed;
}

// Reads the piece headers of all file positions and lists the streams in their order.
bool read_piece_headers(TableSetup& setup, bool split) {
    const TableEntry& entry = setup.entry;
    SideEncoding* const first = syzygy_first_encoding(setup.entry, setup.kind);
    const int positions = file_positions(entry);
    const bool second_byte = entry.has_pawns != 0 && entry.other_pawns > 0;
    for (int t = 0; t < positions; ++t) {
        const std::uint8_t* const header = take(setup.file, entry.men + (second_byte ? 2U : 1U));
        if (header == nullptr)
            return false;
        for (int side = 0; side < (split ? 2 : 1); ++side) {
            StreamSetup& stream = setup.streams[setup.stream_count++];
            stream.encoding = first + t + side * positions;
            if (!set_up_encoding(setup, stream, header, 4 * side, t))
                return false;
        }
    }
    return align(setup.file, 2);
}

// --- The stream headers ---

// Fills the length of a symbol and of all parts that it is made of, and returns it. While the parts
// are looked at, the whole counts as broken, and so what runs in a circle stays broken.
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

// Fills the smallest code of each length, left-aligned in 64 bits. Longer codes are smaller.
void set_code_base(std::uint64_t* base, const std::uint8_t* code_offsets, int min_length,
                   int lengths) {
    const auto first_symbol = [code_offsets](int i) { return load_le16(code_offsets + 2 * i); };
    base[lengths - 1] = 0;
    for (int i = lengths - 2; i >= 0; --i)
        base[i] = (base[i + 1] + first_symbol(i) - first_symbol(i + 1)) / 2;
    for (int i = 0; i < lengths; ++i)
        base[i] <<= 64 - (min_length + i);
}

// Fills the code runs. All bits of a pattern that decide a code's length and symbol are known, as
// the smallest codes of lengths up to CODE_RUN_BITS are multiples of the pattern's lowest bit.
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

// One heap block for the record and its three arrays; all bytes 0. Null if memory runs out.
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

enum class SetupResult { DONE, CORRUPTED, OUT_OF_MEMORY };

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

SetupResult read_stream_header(TableSetup& setup, StreamSetup& stream) {
    FileReader& file = setup.file;
    const std::uint8_t* const flags = take(file, 1);
    if (flags == nullptr)
        return SetupResult::CORRUPTED;
    stream.flags = *flags;
    if ((stream.flags & STREAM_CONSTANT) != 0)
        return read_constant_stream(setup, stream);

    const std::uint8_t* const head = take(file, 9);
    if (head == nullptr)
        return SetupResult::CORRUPTED;
    const int block_size_log2 = head[0];
    const int index_bits = head[1];
    const std::uint64_t blocks = load_le32(head + 3);
    const int max_length = head[7];
    const int min_length = head[8];
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
    decoder->block_length_count = blocks + head[2];
    decoder->index_count = (stream.positions - 1 + (std::uint64_t{1} << index_bits)) >> index_bits;
    decoder->symbol_count = symbols;
    decoder->view_end = file.view + file.size;

    for (std::uint32_t symbol = 0; symbol < symbols; ++symbol)
        set_symbol_length(*decoder, symbol);
    set_code_runs(*decoder);
    return SetupResult::DONE;
}

// --- What follows the headers ---

// The value maps of one file position: four, each a length and that many entries. Their places
// are stored in entries from `maps`.
bool read_value_maps(FileReader& file, const std::uint8_t* maps, bool wide,
                     std::uint32_t offsets[4]) {
    const std::uint64_t width = wide ? 2 : 1;
    if (wide && !align(file, 2))
        return false;
    for (int i = 0; i < 4; ++i) {
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
    const std::uint8_t* const maps = setup.file.view + setup.file.offset;
    dtz_map(setup.entry) = maps;
    for (int t = 0; t < setup.stream_count; ++t) {
        const std::uint8_t flags = setup.streams[t].flags;
        dtz_flags(setup.entry, t) = flags;
        if ((flags & DTZ_MAPPED) != 0 &&
            !read_value_maps(setup.file, maps, (flags & DTZ_WIDE_MAPS) != 0,
                             dtz_map_offsets(setup.entry, t)))
            return false;
    }
    return align(setup.file, 2);
}

// The next section of so many entries. Where the file ends within it, `count` becomes the number
// of entries that are wholly there.
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

// The three sections, each over all streams. A constant stream has none of them. A file that ends
// too early still serves for what is there.
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
        std::uint64_t whole_blocks = stream.block_count; // a last one that is cut off serves too
        stream.blocks =
            take_entries(file, std::uint64_t{1} << stream.block_size_log2, whole_blocks);
    }
}

SetupResult build_decoders(TableSetup& setup) {
    const std::uint8_t* const head = take(setup.file, 5);
    if (head == nullptr || load_le32(head) != magic_numbers[setup.kind])
        return SetupResult::CORRUPTED;
    const bool split = setup.kind == KIND_WDL && (head[4] & FILE_SPLIT) != 0;
    if (!read_piece_headers(setup, split))
        return SetupResult::CORRUPTED;
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

// Maps the whole file and keeps the view in the entry. Returns its size, 0 if there is no file.
std::uint64_t map_view(TableEntry& entry, const char* name, TableKind kind) {
    const FileHandle file = syzygy_open_file(name, extensions[kind]);
    if (file == INVALID_FILE)
        return 0;
    // A file that was emptied since it was found cannot be mapped; that is no reason to end.
    std::uint64_t size = 0;
    if (file_size(file, size) && size < LEAST_FILE_SIZE) {
        std::fprintf(stderr, "Corrupted table.\n");
        close_file(file);
        return 0;
    }
    const MapResult result = map_file(file, entry.mapping[kind], entry.view[kind], size);
    if (result != MapResult::MAPPED) {
        std::fprintf(stderr, "%s() failed, error = %lu.\n",
                     result == MapResult::NO_MAPPING ? "CreateFileMapping" : "MapViewOfFile",
                     last_file_error());
        std::fprintf(stderr, "Could not map %s%s into memory.\n", name, extensions[kind]);
        std::exit(1);
    }
    close_file(file);
    return size;
}

} // namespace

const char* table_extension(TableKind kind) {
    return extensions[kind];
}

SideEncoding* syzygy_first_encoding(TableEntry& entry, TableKind kind) {
    return entry.has_pawns != 0 ? pawn_entry(entry).encodings + first_pawn_encoding[kind]
                                : piece_entry(entry).encodings + first_piece_encoding[kind];
}

bool syzygy_map_table(TableEntry& entry, const char* name, TableKind kind) {
    const std::uint64_t size = map_view(entry, name, kind);
    if (size == 0)
        return false;
    TableSetup setup{entry, kind, {}, {entry.view[kind], size, 0}, {}, 0};
    count_signature_men(name, setup.counts);
    const SetupResult result = build_decoders(setup);
    if (result == SetupResult::DONE)
        return true;
    if (result == SetupResult::CORRUPTED)
        std::fputs("Corrupted table.\n", stderr);
    syzygy_unmap_table(entry, kind);
    return false;
}

void syzygy_unmap_table(TableEntry& entry, TableKind kind) {
    if (entry.view[kind] != nullptr) {
        if (!unmap_view(entry.view[kind], entry.mapping[kind]))
            std::fprintf(stderr, "unmap failed, error code %lu\n", last_file_error());
        if (!close_mapping(entry.mapping[kind]))
            std::fprintf(stderr, "CloseHandle failed, error code %lu\n", last_file_error());
        entry.view[kind] = nullptr;
        entry.mapping[kind] = 0;
    }
    // Two sides for win, draw and loss, one for distance to zeroing.
    const int encodings = kind == KIND_WDL ? 2 * file_positions(entry) : file_positions(entry);
    SideEncoding* const first = syzygy_first_encoding(entry, kind);
    for (SideEncoding* encoding = first; encoding != first + encodings; ++encoding) {
        operator delete(encoding->decoder);
        encoding->decoder = nullptr;
    }
}

} // namespace brindlemoth
