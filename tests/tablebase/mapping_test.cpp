// What a table file on its first probe can do wrong, and what the system can.

#include "support/support.h"
#include "tablebase/decoder.h"
#include "tablebase/memory_files.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

using Answer = std::pair<int, int>; // value and success
constexpr Answer NO_ANSWER = {0, PROBE_FAILED};
constexpr Answer WIN = {WDL_WIN, PROBE_GOOD};
constexpr Answer LOSS = {WDL_LOSS, PROBE_GOOD};
constexpr Answer DRAW = {WDL_DRAW, PROBE_GOOD};

Answer wdl(const ProbeBoard& board) {
    int success;
    const int value = syzygy_wdl(board, success);
    return {value, success};
}

Answer dtz(const ProbeBoard& board) {
    int success;
    const int value = syzygy_dtz(board, success);
    return {value, success};
}

// What is said on stderr while a probe finds no answer.
std::string complaint(const ProbeBoard& board, Answer (*probe)(const ProbeBoard&) = wdl) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(probe(board).second, PROBE_FAILED);
    return testing::internal::GetCapturedStderr();
}

const std::string CORRUPTED = "Corrupted table.\n";
const std::string queen_header = {'\0', '\x66', '\x55', '\xEE'}; // both sides: K, Q, k
const std::string good_table = constant_table(true, queen_header, 4, 0);

ProbeBoard queen_board(bool queen_is_white, bool white_to_move) {
    return board_from(std::string(queen_is_white ? "Q" : "q") + "7/8/5k2/8/8/2K5/8/8 " +
                      (white_to_move ? "w" : "b") + " - - 0 1");
}

constexpr std::uint64_t POSITIONS = 31332; // of KQvK

// KQvK for one side, with codes of one length. Code n is that of symbol n, a leaf of the value n.
struct FlatStream {
    std::uint32_t code_length;
    std::uint32_t symbols;    // not all codes of the length need have one
    std::uint32_t index_bits; // one index entry for all positions
    std::uint32_t block;      // of that entry
    std::uint32_t offset;     // likewise
    std::uint32_t blocks;     // how many, of 2 to the power block_size_log2 bytes
    std::uint32_t block_size_log2;
    std::uint32_t values; // of each block
};

std::uint64_t code_at(const FlatStream& stream, std::uint64_t index) {
    return (index * 7 + index / 100) % stream.symbols;
}

// The file, and where its blocks begin. It ends with the last of them if the length allows it.
std::string flat_table(const FlatStream& stream, std::size_t* first_block = nullptr) {
    std::string file("\x71\xE8\x23\x5D\0", 5);
    file += queen_header + '\0';
    const auto number = [&file](std::uint32_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8)
            file += static_cast<char>(value & 0xFF);
    };
    number(0, 1);
    number(stream.block_size_log2, 1);
    number(stream.index_bits, 1);
    number(0, 1);
    number(stream.blocks, 4);
    number(stream.code_length * 0x0101, 2); // the longest and the shortest code
    number(0, 2);
    number(stream.symbols, 2);
    for (std::uint32_t i = 0; i < stream.symbols; ++i)
        number(0xFFF000 + i, 3);
    number(0, static_cast<int>(stream.symbols % 2));
    number(stream.block, 4);
    number(stream.offset, 2);
    for (std::uint32_t i = 0; i < stream.blocks; ++i)
        number(stream.values - 1, 2);
    file.resize((file.size() + 63) / 64 * 64);
    const std::size_t start = file.size();
    if (first_block != nullptr)
        *first_block = start;
    file.resize(start + (std::size_t{stream.blocks} << stream.block_size_log2));
    for (std::uint64_t index = 0; index < POSITIONS; ++index) {
        const std::uint64_t block = index / stream.values;
        const std::uint64_t bit =
            (block << (stream.block_size_log2 + 3)) + index % stream.values * stream.code_length;
        for (std::uint32_t i = 0; i < stream.code_length; ++i) {
            const std::uint64_t one = code_at(stream, index) >> (stream.code_length - 1 - i) & 1;
            file[start + (bit + i) / 8] |= static_cast<char>(one << (7 - (bit + i) % 8));
        }
    }
    file.resize(file.size() + (16 - file.size() % 64 + 64) % 64);
    return file;
}

// A stream of small blocks, of which the last ends with the file where any number of values to a
// block makes it so.
FlatStream ending_stream(std::uint32_t code_length, std::uint32_t symbols,
                         std::uint32_t block_size_log2) {
    const auto blocks = [](std::uint32_t values) {
        return static_cast<std::uint32_t>((POSITIONS - 1) / values + 1);
    };
    const std::uint32_t most = (8U << block_size_log2) / code_length;
    std::uint32_t values = most;
    while (values > 0 && (blocks(values) << block_size_log2) % 64 != 16)
        --values;
    values = values == 0 ? most : values;
    return {code_length,    symbols,         15,    16384 / values, 16384 % values,
            blocks(values), block_size_log2, values};
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

} // namespace

TEST_F(Mapping, BareKingsNeedNoTable) {
    const ProbeBoard board = board_from("7k/8/8/8/8/8/8/K7 w - - 0 1");
    EXPECT_EQ(wdl(board), DRAW);
    EXPECT_EQ(dtz(board), DRAW);
}

TEST_F(Mapping, AMissingSideOrFileHasNoAnswer) {
    use(constant_table(false, queen_header, 4, 0));
    EXPECT_EQ(dtz(queen_board(true, true)).second, PROBE_FAILED); // there is no ".rtbz"
    EXPECT_EQ(wdl(queen_board(true, true)), WIN);
    EXPECT_EQ(wdl(queen_board(true, false)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(false, false)), WIN);
}

TEST_F(Mapping, BadHeadersAreCorrupted) {
    const struct {
        std::size_t offset;
        char value;
    } changes[] = {
        {0, '\0'},   {5, '\x0F'}, // the leading men never enter
        {6, '\x65'},              // two queens
        {7, '\x57'},              // no such type
        {8, '\x5E'},              // second side: K, Q, Q
        {8, '\xE6'},              // first side: K, Q, K
        {10, '\0'},               // not constant, with nothing behind it
    };
    std::vector<std::string> bad_files = {std::string("\x71\xE8\x23\x5D") + std::string(12, '\0')};
    for (const auto& change : changes) {
        bad_files.push_back(good_table);
        bad_files.back()[change.offset] = change.value;
    }
    for (const std::string& bad : bad_files) {
        use(bad);
        EXPECT_EQ(complaint(queen_board(true, true)), CORRUPTED);
        EXPECT_EQ(memory_file_uses(), 0);
        // The way that failed stays closed; the board with the colours exchanged tries once more.
        EXPECT_EQ(complaint(queen_board(true, false)), "");
        EXPECT_EQ(complaint(queen_board(false, true)), CORRUPTED);
    }
}

// Codes that not every bit pattern stands for, and blocks that leave nothing behind them.
TEST_F(Mapping, WhateverDecodesIsAnswered) {
    int ended = 0; // files that end with their last block
    for (const auto& [code_length, symbols] :
         {std::pair{1U, 1U}, {1U, 2U}, {2U, 3U}, {3U, 5U}, {11U, 5U}, {33U, 3U}}) {
        for (std::uint32_t block_size_log2 = code_length > 32 ? 3 : 2; block_size_log2 <= 4;
             ++block_size_log2) {
            const FlatStream stream = ending_stream(code_length, symbols, block_size_log2);
            std::size_t start;
            const std::string whole = flat_table(stream, &start);
            ended += whole.size() == start + (std::size_t{stream.blocks} << block_size_log2);
            // The file once more, a few blocks shorter.
            for (const std::size_t size : {whole.size(), whole.size() - 64}) {
                use(whole.substr(0, size));
                wdl(queen_board(true, true));
                ASSERT_EQ(piece_entries[0].ready[KIND_WDL], 1U);
                std::uint64_t wrong = 0;
                for (std::uint64_t index = 0; index < POSITIONS;
                     index += index + 300 < POSITIONS ? 97 : 1) {
                    const std::uint64_t end_bit =
                        ((index / stream.values) << (block_size_log2 + 3)) +
                        (index % stream.values + 1) * code_length;
                    const std::uint8_t* const record = syzygy_decode(only_stream(), index);
                    const bool there = start + (end_bit + 7) / 8 <= size;
                    const bool right =
                        there ? record != nullptr && record[0] == code_at(stream, index)
                              : record == nullptr;
                    wrong += right ? 0 : 1;
                }
                EXPECT_EQ(wrong, 0U) << code_length << " bits, " << size << " bytes";
            }
        }
    }
    EXPECT_GE(ended, 8);
}

// What a code stands for may be missing or run in a circle: that fails the probes that meet it.
TEST_F(Mapping, ABrokenSymbolFailsItsOwnProbes) {
    const FlatStream stream{2, 4, 15, 0, 16384, 1, 13, 31332};
    const std::string whole = flat_table(stream);
    const std::size_t count = 9 + 1 + 10 + 2; // behind the piece header and one code length
    for (const bool missing : {true, false}) {
        std::string file = whole;
        if (missing)
            file[count] = 3;
        else
            file.replace(count + 2 + 9, 3, "\x03\x30\x00", 3); // a pair of itself and itself
        use(file);
        EXPECT_EQ(wdl(queen_board(true, true)).second, PROBE_FAILED);
        EXPECT_EQ(syzygy_decode(only_stream(), 1), nullptr);
    }
}

// An index entry far from the values that it stands for: the walk gives up in time.
TEST_F(Mapping, AWalkOverTooManyBlocksHasNoAnswer) {
    FlatStream stream{2, 3, 18, 199999, 0, 200000, 3, 4};
    use(flat_table(stream));
    EXPECT_NE(wdl(queen_board(true, true)).second, PROBE_FAILED);
    stream.values = 1; // four times as far
    use(flat_table(stream));
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
}

TEST_F(Mapping, AFileEmptiedSinceItWasFoundIsCorrupted) {
    use(good_table);
    put_memory_file("KQvK.rtbw", "");
    EXPECT_EQ(complaint(queen_board(true, true)), CORRUPTED);
}

TEST_F(Mapping, ABadValueHasNoAnswer) {
    use(constant_table(true, queen_header, 5, 255));
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(true, false)), NO_ANSWER);
}

TEST_F(Mapping, AFailedDistanceClosesTheValueToo) {
    put_memory_file("KQvK.rtbz", std::string(16, '\0'));
    use(good_table);
    EXPECT_EQ(wdl(queen_board(true, true)), WIN);
    EXPECT_EQ(complaint(queen_board(true, true), dtz), CORRUPTED);
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(false, true)), LOSS);
}

// A table knows nothing of en passant: what it holds for a position whose only legal move is such
// a capture is stalemate.
TEST_F(Mapping, AForcedCaptureEnPassantIsNoStalemate) {
    const std::string two_pawns = {'\0', '\x11', '\x11', '\x99', '\x66', '\xEE', '\x55'};
    const std::string one_pawn = {'\0', '\x99', '\x66', '\xEE', '\x55'};
    put_memory_file("KQvK.rtbw", good_table);
    put_memory_file("KQvKP.rtbw", constant_table(true, one_pawn, 4, 0, 4));
    use(constant_table(true, two_pawns, 2, 2, 4), "KQPvKP.rtbw");
    const struct {
        const char* fen;
        Answer answer;
    } cases[] = {
        // Queen c2 and king e6 leave nothing but exd6, which loses.
        {"8/8/4k3/3pP3/8/8/2q5/K7 w - d6 0 1", {WDL_LOSS, PROBE_GOOD_BY_CAPTURE}},
        {"8/8/4k3/3pP3/8/8/2q5/K7 w - - 0 1", DRAW},
        // With a king's move besides, the table's word stands.
        {"8/8/4k3/3pP3/8/8/3q4/K7 w - d6 0 1", DRAW},
        // In check it is no stalemate either.
        {"8/8/5k2/6pP/7K/5q2/8/8 w - g6 0 1", DRAW},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(wdl(board_from(c.fen)), c.answer) << c.fen;
        EXPECT_EQ(wdl(colours_exchanged(board_from(c.fen))), c.answer) << c.fen;
    }
}

// A file that has gone since discovery fails without a word.
TEST_F(Mapping, AVanishedFileIsSilent) {
    use(good_table);
    remove_memory_files();
    EXPECT_EQ(complaint(queen_board(true, true)), "");
}

// Boards that no game reaches have the material key of a table, but no place in it.
TEST_F(Mapping, ImpossibleBoardsHaveNoAnswer) {
    use(good_table);
    for (const char* const fen : {
             "8/8/8/8/8/8/8/KQ6 w - - 0 1",     // no black king
             "Q7/8/5k2/8/7k/2K5/8/8 w - - 0 1", // two of them
             "8/8/8/1Q6/8/7K/8/K7 b - - 0 1",   // both kings white
         })
        EXPECT_EQ(wdl(board_from(fen)), NO_ANSWER) << fen;
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

TEST_F(Mapping, AReleaseThatFailsIsReported) {
    using Case = std::pair<FailingOperation, std::string>;
    for (const auto& [operation, message] :
         {Case{FailingOperation::UNMAP, "unmap failed, error code 1234\n"},
          Case{FailingOperation::CLOSE_MAPPING, "CloseHandle failed, error code 1234\n"}}) {
        use(good_table);
        EXPECT_EQ(wdl(queen_board(true, true)), WIN);
        make_fail(operation);
        testing::internal::CaptureStderr();
        syzygy_init("");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
        make_fail(FailingOperation::NONE);
        EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    }
}

TEST_F(Mapping, AFileWithoutSizeIsIncomplete) {
    make_fail(FailingOperation::SIZE);
    testing::internal::CaptureStderr();
    use(good_table);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Incomplete tablebase file KQvK.rtbw\n");
    EXPECT_EQ(syzygy_max_men, 0U);
}

// Memory that runs out at any point of a probe makes that probe fail; a leak checker sees that
// nothing is left behind.
TEST_F(Mapping, OutOfMemoryFailsTheProbe) {
    SKIP_WITHOUT_TABLES();
    put_genuine_tables();
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

TEST_F(Mapping, ANewPathDropsEverything) {
    SKIP_WITHOUT_TABLES();
    put_genuine_tables();
    std::mt19937 random(3);
    for (const char* const next : {MEMORY_DIRECTORY, "nothing", ""}) {
        syzygy_init(MEMORY_DIRECTORY);
        EXPECT_EQ(memory_file_uses(), 0);
        for (const std::string& name : four_men_signatures())
            EXPECT_NE(dtz(random_board(name, random)).second, PROBE_FAILED) << name;
        EXPECT_GE(memory_file_uses(), 30);
        syzygy_init(next);
        EXPECT_EQ(memory_file_uses(), 0) << next;
    }
}

} // namespace brindlemoth
