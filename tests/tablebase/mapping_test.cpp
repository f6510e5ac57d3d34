// What a table file on its first probe can do wrong, and what the system can.

#include "support/support.h"
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

// KQvK for one side with codes of one bit, each a leaf: symbol 0 the value 4, symbol 1 the value 3.
struct OneBitStream {
    std::uint32_t symbols;         // 1 or 2; the code has room for two
    std::uint32_t index_bits;      // one index entry for all positions
    std::uint32_t block;           // of that entry
    std::uint32_t offset;          // likewise
    std::uint32_t blocks;          // how many, of 2 to the power block_size_log2 bytes
    std::uint32_t block_size_log2; // of a block's bytes
    std::uint32_t last_value;      // values of each block less 1
};

std::string one_bit_table(const OneBitStream& stream) {
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
    number(0x0101, 2); // the longest and the shortest code
    number(0, 2);
    number(stream.symbols, 2);
    for (std::uint32_t i = 0; i < stream.symbols; ++i)
        number(0xFFF004 - i, 3);
    number(0, static_cast<int>(stream.symbols % 2));
    number(stream.block, 4);
    number(stream.offset, 2);
    for (std::uint32_t i = 0; i < stream.blocks; ++i)
        number(stream.last_value, 2);
    file.resize((file.size() + 63) / 64 * 64);
    file.resize(file.size() + (std::size_t{stream.blocks} << stream.block_size_log2));
    file.resize((file.size() + 63) / 64 * 64 + 16);
    return file;
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

TEST_F(Mapping, ACodeWithoutASymbolIsCorrupted) {
    OneBitStream stream{2, 15, 0, 16384, 1, 12, 31331};
    use(one_bit_table(stream));
    EXPECT_EQ(wdl(queen_board(true, true)), WIN);
    stream.symbols = 1;
    use(one_bit_table(stream));
    EXPECT_EQ(complaint(queen_board(true, true)), CORRUPTED);
}

// An index entry far from the values that it stands for: the walk gives up in time.
TEST_F(Mapping, AWalkOverTooManyBlocksHasNoAnswer) {
    OneBitStream stream{2, 18, 199999, 0, 200000, 3, 3};
    use(one_bit_table(stream));
    EXPECT_EQ(wdl(queen_board(true, true)), WIN);
    stream.last_value = 0; // four times as far
    use(one_bit_table(stream));
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
