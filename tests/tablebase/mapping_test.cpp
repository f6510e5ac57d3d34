// The first probe of a table file: wrong files, and failures of the system.

#include "tablebase/decoder.h"
#include "tablebase/memory_files.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/plain_table.h"

#include <bit>
#include <gtest/gtest.h>
#include <random>

using namespace brindlemoth;

using Answer = std::pair<int, int>; // value and success
constexpr Answer NO_ANSWER = {0, PROBE_FAILED};
constexpr Answer WIN = {WDL_WIN, PROBE_GOOD};
constexpr Answer DRAW = {WDL_DRAW, PROBE_GOOD};

static Answer wdl(const ProbeBoard& board) {
    int success;
    const int value = syzygy_wdl(board, success);
    return {value, success};
}

static Answer dtz(const ProbeBoard& board) {
    int success;
    const int value = syzygy_dtz(board, success);
    return {value, success};
}

// The messages on stderr during a probe that fails.
static std::string complaint(const ProbeBoard& board, Answer (*probe)(const ProbeBoard&) = wdl) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(probe(board).second, PROBE_FAILED);
    return testing::internal::GetCapturedStderr();
}

const std::string CORRUPTED = "Corrupted table.\n";
const std::string good_table = bytes_of(constant_table("KQvK", {4, 0}));

static ProbeBoard queen_board(bool queen_is_white, bool white_to_move) {
    return board_from(std::string(queen_is_white ? "Q" : "q") + "7/8/5k2/8/8/2K5/8/8 " +
                      (white_to_move ? "w" : "b") + " - - 0 1");
}

constexpr std::uint64_t POSITIONS = 31332; // of KQvK

static std::uint64_t code_at(std::uint64_t index, std::size_t symbols) {
    return (index * 7 + index / 100) % symbols;
}

// KQvK for one side, with codes of one length, not all of which need have a symbol. Code n is that
// of symbol n, a leaf of the value n. One index entry serves all positions.
static tablegen::CompressedStream flat_stream(int code_length, std::size_t symbols,
                                              int block_size_log2, std::uint32_t block_values) {
    tablegen::CompressedStream stream;
    stream.block_size_log2 = block_size_log2;
    stream.index_bits = 15;
    stream.min_code_length = stream.max_code_length = code_length;
    stream.first_symbol = {0};
    for (std::size_t i = 0; i < symbols; ++i)
        stream.symbols.push_back({static_cast<std::uint16_t>(i), tablegen::LEAF});
    stream.index_table = {{16384 / block_values, static_cast<std::uint16_t>(16384 % block_values)}};
    stream.block_lengths.assign((POSITIONS - 1) / block_values + 1,
                                static_cast<std::uint16_t>(block_values - 1));
    stream.blocks.resize(stream.block_lengths.size() << block_size_log2);
    const auto length = static_cast<std::uint64_t>(code_length);
    for (std::uint64_t index = 0; index < POSITIONS; ++index) {
        const std::uint64_t end =
            ((index / block_values) << (block_size_log2 + 3)) + (index % block_values + 1) * length;
        for (std::uint64_t i = 0; i < length; ++i)
            stream.blocks[(end - 1 - i) / 8] |= static_cast<std::uint8_t>(
                (code_at(index, symbols) >> i & 1) << (7 - (end - 1 - i) % 8));
    }
    return stream;
}

static std::string flat_table(const tablegen::CompressedStream& stream) {
    tablegen::TableFile file = constant_table("KQvK", {0});
    file.positions[0].streams[0].data = stream;
    return bytes_of(file);
}

// The decoder of the only table, which is mapped.
const CompressedStream& only_stream() {
    return *piece_entries[0].encodings[0].decoder;
}

struct Mapping : testing::Test {
    void SetUp() override { remove_memory_files(); }
    void TearDown() override {
        make_fail(FailingOperation::NONE);
        syzygy_init("");
        EXPECT_EQ(memory_file_uses(), 0);
    }
    // Makes a file the only table.
    static void use(const std::string& content, const std::string& name = "KQvK.rtbw") {
        put_memory_file(name, content);
        syzygy_init(MEMORY_DIRECTORY);
    }
};

TEST_F(Mapping, ValuesOfConstantTables) {
    const struct {
        std::vector<std::uint16_t> values; // of KQvK
        const char* fen;
        Answer answer;
    } rows[] = {
        {{4}, "7k/8/8/8/8/8/8/K7 w - - 0 1", DRAW}, // bare kings need no table
        {{4}, "Q7/8/5k2/8/8/2K5/8/8 w - - 0 1", WIN},
        {{4}, "q7/8/5k2/8/8/2K5/8/8 b - - 0 1", WIN},
        {{4}, "Q7/8/5k2/8/8/2K5/8/8 b - - 0 1", NO_ANSWER}, // the file has no such side
        {{5, 255}, "Q7/8/5k2/8/8/2K5/8/8 w - - 0 1", NO_ANSWER},
        // Boards that no game reaches have the material key of a table, but no place in it.
        {{4, 0}, "8/8/8/8/8/8/8/KQ6 w - - 0 1", NO_ANSWER},     // no black king
        {{4, 0}, "Q7/8/5k2/8/7k/2K5/8/8 w - - 0 1", NO_ANSWER}, // two of them
        {{4, 0}, "8/8/8/1Q6/8/7K/8/K7 b - - 0 1", NO_ANSWER},   // both kings white
    };
    for (const auto& row : rows) {
        use(bytes_of(constant_table("KQvK", row.values)));
        EXPECT_EQ(wdl(board_from(row.fen)), row.answer) << row.fen;
        // There is no file of distances.
        EXPECT_EQ(dtz(board_from(row.fen)).second != PROBE_FAILED, row.answer == DRAW);
    }
}

TEST_F(Mapping, BadHeadersAreCorrupted) {
    const std::pair<std::size_t, char> changes[] = {
        {0, '\0'},   {5, '\x0F'}, // the leading men never enter
        {6, '\x56'},              // two kings
        {7, '\x67'},              // no such type
        {8, '\x5E'},              // second side: Q, K, Q
        {8, '\xE6'},              // first side: Q, K, K
        {10, '\0'},               // not constant, with nothing behind it
    };
    std::vector<std::string> bad_files = {std::string("\x71\xE8\x23\x5D") + std::string(12, '\0')};
    for (const auto& [offset, value] : changes) {
        bad_files.push_back(good_table);
        bad_files.back()[offset] = value;
    }
    // The longest code has two bits.
    for (const auto& [index_bits, shortest_code] : {std::pair{15, 0}, {15, 3}, {0, 2}}) {
        tablegen::CompressedStream stream = flat_stream(2, 4, 13, POSITIONS);
        stream.index_bits = index_bits;
        stream.min_code_length = shortest_code;
        bad_files.push_back(flat_table(stream));
    }
    bad_files.push_back(flat_table(flat_stream(13, 4097, 13, 5000)));
    for (const std::string& bad : bad_files) {
        use(bad);
        EXPECT_EQ(complaint(queen_board(true, true)), CORRUPTED);
        EXPECT_EQ(memory_file_uses(), 0);
        // The failed slot makes no further attempt. The slot of the exchanged colours tries again.
        EXPECT_EQ(complaint(queen_board(true, false)), "");
        EXPECT_EQ(complaint(queen_board(false, true)), CORRUPTED);
    }
}

// Headers of constant tables whose men stand in an order that the index has no formula for.
TEST_F(Mapping, MenInAWrongOrderAreCorrupted) {
    const struct {
        const char *name, *men;
        int turn_of_other_pawns = 15;
        std::size_t first_wrong = 0; // file position
    } rows[] = {
        {"KNNvK", "KNNk"},      // the two kings do not lead
        {"KNNvK", "KkNQ"},      // the knights are not neighbours
        {"KNNvKQ", "NNKkq"},    // two of the three that lead are alike
        {"KPPvKP", "PPpKk", 1}, // the side with more pawns leads
        {"KPvKP", "PkpK", 1},   // the other pawn is not the second
        {"KPvKP", "PpKk", 15},  // the other pawn never enters
        {"KPvKP", "pPKk", 1, 1},
    };
    std::mt19937 random(19);
    for (const auto& row : rows) {
        tablegen::StreamOrder order{0, row.turn_of_other_pawns, {}};
        for (std::size_t i = 0; row.men[i] != '\0'; ++i)
            order.piece[i] =
                static_cast<std::uint8_t>(std::string(" PNBRQK  pnbrqk").find(row.men[i]));
        tablegen::TableFile file = constant_table(row.name, {4});
        for (std::size_t i = row.first_wrong; i < file.positions.size(); ++i)
            file.positions[i].streams[0].order = order;
        use(bytes_of(file), std::string(row.name) + ".rtbw");
        testing::internal::CaptureStderr();
        int success;
        syzygy_probe_table(random_board(row.name, random), WDL_DRAW, success, KIND_WDL);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), CORRUPTED) << row.name << ' ' << row.men;
    }
}

// Files that end inside their headers: piece headers, constant streams, codes, symbols, maps.
TEST_F(Mapping, AFileThatEndsInItsHeadersIsCorrupted) {
    tablegen::TableFile distances = constant_table("KQvK", {0});
    distances.kind = tablegen::FileKind::DTZ;
    distances.positions[0].flags = tablegen::DTZ_MAPPED;
    distances.positions[0].maps = {{{1, 2, 3}, {4, 5}, {6}, {7, 8}}};
    tablegen::CompressedStream codes = flat_stream(2, 4, 13, POSITIONS);
    codes.max_code_length = 4;
    codes.first_symbol = {0, 0, 0};
    const struct {
        std::string name, content;
        const char* board;
        std::size_t header_bytes;
    } rows[] = {
        {"KPvKP.rtbw", bytes_of(constant_table("KPvKP", {4, 0})), "8/p7/5k2/8/8/2K5/P7/8", 46},
        {"KQvK.rtbw", flat_table(codes), "Q7/8/5k2/8/8/2K5/8/8", 40},
        {"KQvK.rtbz", bytes_of(distances), "Q7/8/5k2/8/8/2K5/8/8", 24},
    };
    for (const auto& [name, content, board, header_bytes] : rows) {
        const TableKind kind = name.back() == 'z' ? KIND_DTZ : KIND_WDL;
        for (std::size_t size = 16; size <= header_bytes; ++size) {
            syzygy_init("");
            remove_memory_files();
            put_memory_file("KQvK.rtbw", good_table);
            use(content, name);
            put_memory_file(name, content.substr(0, size));
            testing::internal::CaptureStderr();
            int success;
            syzygy_probe_table(board_from(std::string(board) + " w - - 0 1"), WDL_WIN, success,
                               kind);
            EXPECT_EQ(testing::internal::GetCapturedStderr(), size < header_bytes ? CORRUPTED : "")
                << name << ' ' << size;
        }
    }
}

// Codes that not every bit pattern stands for, and a file that ends with its blocks or, shortened,
// with one before the last.
TEST_F(Mapping, WhateverDecodesIsAnswered) {
    for (const auto& [length, symbols] :
         {std::pair{1U, 1U}, {1U, 2U}, {2U, 3U}, {3U, 5U}, {11U, 5U}, {33U, 3U}}) {
        for (int block_size_log2 = static_cast<int>(std::bit_width((length - 1) / 8));
             block_size_log2 <= 4; ++block_size_log2) {
            const std::uint32_t values = (8U << block_size_log2) / length;
            const auto stream =
                flat_stream(static_cast<int>(length), symbols, block_size_log2, values);
            const std::string whole = flat_table(stream);
            const std::size_t start =
                whole.size() - tablegen::TRAILER_BYTES - (stream.blocks.size() + 63) / 64 * 64;
            for (const std::size_t size : {whole.size(), whole.size() - 64}) {
                use(whole.substr(0, size));
                wdl(queen_board(true, true));
                ASSERT_EQ(piece_entries[0].ready[KIND_WDL], 1U);
                int wrong = 0;
                for (std::uint64_t index = 0; index < POSITIONS;
                     index += index + 300 < POSITIONS ? 97 : 1) {
                    const std::uint64_t end_bit =
                        ((index / values) << (block_size_log2 + 3)) + (index % values + 1) * length;
                    const std::uint8_t* const record = syzygy_decode(only_stream(), index);
                    const bool there = start + (end_bit + 7) / 8 <= size;
                    wrong += (record != nullptr) != there ||
                                     (there && record[0] != code_at(index, symbols))
                                 ? 1
                                 : 0;
                }
                EXPECT_EQ(wrong, 0) << length << " bits, " << size << " bytes";
            }
        }
    }
}

// Codes of 40 bits: the register holds four whole ones after it was filled.
TEST_F(Mapping, ACodeThatIsLongerThanTheRegisterFails) {
    use(flat_table(flat_stream(40, 3, 7, 25)));
    wdl(queen_board(true, true));
    for (std::uint64_t index = 0; index < 25; ++index)
        EXPECT_EQ(syzygy_decode(only_stream(), index) != nullptr, index < 4) << index;
}

// A symbol that is missing or contains itself fails only the probes that meet it.
TEST_F(Mapping, ABrokenSymbolFailsItsOwnProbes) {
    for (const bool missing : {true, false}) {
        tablegen::CompressedStream stream = flat_stream(2, 4, 13, POSITIONS);
        if (missing)
            stream.symbols.pop_back();
        else
            stream.symbols[3] = {3, 3};
        use(flat_table(stream));
        EXPECT_EQ(wdl(queen_board(true, true)).second, PROBE_FAILED);
        EXPECT_EQ(syzygy_decode(only_stream(), 1), nullptr);
    }
}

// An index entry whose block is far before or behind the wanted block.
TEST_F(Mapping, AWalkGoesAsFarAsTheFileGoes) {
    for (const std::uint32_t start : {0U, 199999U}) {
        tablegen::CompressedStream stream = flat_stream(2, 3, 3, 1);
        stream.index_bits = 18;
        stream.index_table = {{start, 0}};
        stream.block_lengths.assign(200000, 0);
        stream.blocks.resize(200000 * 8);
        use(flat_table(stream));
        EXPECT_EQ(wdl(queen_board(true, true)).second, start == 0 ? PROBE_FAILED : PROBE_GOOD);
    }
}

// An index entry that leads before the first block, behind the last length, and to a length without
// a block.
TEST_F(Mapping, AnIndexThatLeadsToNoBlockFails) {
    tablegen::CompressedStream before = flat_stream(1, 1, 12, POSITIONS);
    before.index_bits = 30;
    before.index_table = {{0, 0}};
    tablegen::CompressedStream behind = flat_stream(1, 1, 12, POSITIONS);
    behind.index_table = {{0, 65535}};
    tablegen::CompressedStream no_block = flat_stream(1, 1, 11, 16384);
    no_block.extra_blocks = 1;
    no_block.blocks.resize(2048);
    // Without its last bytes a file has only zeros behind the lengths.
    for (const std::string& file :
         {flat_table(before), flat_table(behind).substr(0, flat_table(behind).size() - 64),
          flat_table(no_block)}) {
        use(file);
        wdl(queen_board(true, true));
        ASSERT_EQ(piece_entries[0].ready[KIND_WDL], 1U);
        EXPECT_EQ(syzygy_decode(only_stream(), 16384), nullptr);
    }
}

TEST_F(Mapping, AFileThatChangedSinceItWasFound) {
    use(good_table);
    put_memory_file("KQvK.rtbw", "");
    EXPECT_EQ(complaint(queen_board(true, true)), CORRUPTED);
    use(good_table);
    remove_memory_files();
    EXPECT_EQ(complaint(queen_board(true, true)), "");
}

TEST_F(Mapping, AFailedDistanceClosesTheValueToo) {
    put_memory_file("KQvK.rtbz", std::string(16, '\0'));
    use(good_table);
    EXPECT_EQ(wdl(queen_board(true, true)), WIN);
    EXPECT_EQ(complaint(queen_board(true, true), dtz), CORRUPTED);
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(false, true)).first, WDL_LOSS);
}

// A table has no en passant. It holds a stalemate for a position whose only legal move is such a
// capture.
TEST_F(Mapping, AForcedCaptureEnPassantIsNoStalemate) {
    put_memory_file("KQvK.rtbw", good_table);
    put_memory_file("KQvKP.rtbw", bytes_of(constant_table("KQvKP", {4, 0})));
    use(bytes_of(constant_table("KQPvKP", {2, 2})), "KQPvKP.rtbw");
    const std::pair<const char*, Answer> cases[] = {
        // Queen c2 and king e6 leave nothing but exd6, which loses.
        {"8/8/4k3/3pP3/8/8/2q5/K7 w - d6 0 1", {WDL_LOSS, PROBE_GOOD_BY_CAPTURE}},
        {"8/8/4k3/3pP3/8/8/2q5/K7 w - - 0 1", DRAW},
        // If the king can move, the table value counts.
        {"8/8/4k3/3pP3/8/8/3q4/K7 w - d6 0 1", DRAW},
        // A position in check is not a stalemate.
        {"8/8/5k2/6pP/7K/5q2/8/8 w - g6 0 1", DRAW},
    };
    for (const auto& [fen, answer] : cases) {
        EXPECT_EQ(wdl(board_from(fen)), answer) << fen;
        EXPECT_EQ(wdl(colours_exchanged(board_from(fen))), answer) << fen;
    }
}

TEST_F(Mapping, SystemFailuresEndTheProcess) {
    use(good_table);
    const std::string rest = "\\(\\) failed, error = 1234\\.\n"
                             "Could not map KQvK\\.rtbw into memory\\.\n$";
    make_fail(FailingOperation::MAPPING);
    EXPECT_EXIT(wdl(queen_board(true, true)), testing::ExitedWithCode(1),
                "^CreateFileMapping" + rest);
    make_fail(FailingOperation::VIEW);
    EXPECT_EXIT(wdl(queen_board(false, true)), testing::ExitedWithCode(1), "^MapViewOfFile" + rest);
}

TEST_F(Mapping, SystemFailuresThatAreReported) {
    for (const auto& [operation, message] :
         {std::pair{FailingOperation::UNMAP, "unmap failed, error code 1234\n"},
          {FailingOperation::CLOSE_MAPPING, "CloseHandle failed, error code 1234\n"},
          {FailingOperation::SIZE, "Incomplete tablebase file KQvK.rtbw\n"}}) {
        use(good_table);
        EXPECT_EQ(wdl(queen_board(true, true)), WIN);
        make_fail(operation);
        testing::internal::CaptureStderr();
        syzygy_init(MEMORY_DIRECTORY);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
        EXPECT_EQ(syzygy_max_men, operation == FailingOperation::SIZE ? 0U : 3U);
        make_fail(FailingOperation::NONE);
    }
}

// Memory that runs out at any point of a probe makes that probe fail; a leak checker sees that
// nothing is left behind.
TEST_F(Mapping, OutOfMemoryFailsTheProbe) {
    put_made_tables();
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        syzygy_init(MEMORY_DIRECTORY);
        allocations_left = failures;
        failed = dtz(board_from("8/2k5/8/2K5/8/8/1P6/8 w - - 0 1")).second == PROBE_FAILED;
        allocations_left = -1;
        EXPECT_TRUE(failures > 0 || memory_file_uses() == 0);
    }
    EXPECT_GT(failures, 8); // each of the pawn's streams at least
}
