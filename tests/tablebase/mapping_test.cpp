// What a table file on its first probe can do wrong, and what the system can.

#include "support/support.h"
#include "tablebase/allocation_hooks.h"
#include "tablebase/memory_files.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

// A table whose one or two streams for each file position are constant; all file positions have
// the same piece header.
std::string constant_table(bool split, const std::string& piece_header, std::uint8_t value,
                           std::uint8_t second_value, int file_positions = 1) {
    std::string file = "\x71\xE8\x23\x5D";
    file += split ? '\1' : '\0';
    for (int t = 0; t < file_positions; ++t)
        file += piece_header;
    file.resize(file.size() + file.size() % 2);
    for (int t = 0; t < file_positions; ++t) {
        file += '\x80';
        file += static_cast<char>(value);
        if (split) {
            file += '\x80';
            file += static_cast<char>(second_value);
        }
    }
    file.resize(80);
    return file;
}

ProbeBoard queen_board(bool queen_is_white, bool white_to_move) {
    ProbeBoard board = empty_board(white_to_move);
    put_man(board, {1, PROBE_KING}, C3);
    put_man(board, {0, PROBE_KING}, F6);
    put_man(board, {queen_is_white ? 1 : 0, PROBE_QUEEN}, A8);
    return board;
}

struct Answer {
    int value;
    int success;
    bool operator==(const Answer&) const = default;
};

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

constexpr Answer NO_ANSWER = {0, PROBE_FAILED};
const std::string queen_header = {'\0', '\x66', '\x55', '\xEE'}; // both sides: K, Q, k

// KQvK for one side with codes of one bit, each a leaf: symbol 0 the value 4, symbol 1 the value 3.
struct OneBitStream {
    int symbols;          // 1 or 2; the code has room for two
    int index_bits;       // one index entry for all positions
    std::uint32_t block;  // of that entry
    std::uint32_t offset; // likewise
    std::uint32_t blocks; // how many, of 2 to the power block_size_log2 bytes
    int block_size_log2;
    std::uint32_t last_value; // values of each block less 1
};

std::string one_bit_table(const OneBitStream& stream) {
    std::string file("\x71\xE8\x23\x5D\0", 5);
    file += queen_header + '\0';
    const auto number = [&file](std::uint32_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8)
            file += static_cast<char>(value & 0xFF);
    };
    number(0, 1);
    number(static_cast<std::uint32_t>(stream.block_size_log2), 1);
    number(static_cast<std::uint32_t>(stream.index_bits), 1);
    number(0, 1);
    number(stream.blocks, 4);
    number(0x0101, 2); // the longest and the shortest code
    number(0, 2);
    number(static_cast<std::uint32_t>(stream.symbols), 2);
    for (int i = 0; i < stream.symbols; ++i) {
        number(static_cast<std::uint32_t>(4 - i), 1);
        number(0xFFF0, 2);
    }
    number(0, stream.symbols % 2);
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
        EXPECT_EQ(memory_file_counts().views + memory_file_counts().mappings, 0);
        EXPECT_EQ(memory_file_counts().open_files, 0);
    }
    // Makes a file the only table.
    static void use(const std::string& name, const std::string& content) {
        put_memory_file(name, content);
        syzygy_init(MEMORY_DIRECTORY);
    }
};

} // namespace

TEST_F(Mapping, BareKingsNeedNoTable) {
    ProbeBoard board = empty_board(true);
    put_man(board, {1, PROBE_KING}, A1);
    put_man(board, {0, PROBE_KING}, H8);
    EXPECT_EQ(wdl(board), (Answer{0, PROBE_GOOD}));
    EXPECT_EQ(dtz(board), (Answer{0, PROBE_GOOD}));
}

TEST_F(Mapping, SidesAndColoursFindTheirStream) {
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    for (const bool queen_is_white : {true, false}) {
        for (const bool white_to_move : {true, false})
            EXPECT_EQ(wdl(queen_board(queen_is_white, white_to_move)),
                      (Answer{queen_is_white == white_to_move ? WDL_WIN : WDL_LOSS, PROBE_GOOD}));
    }
    EXPECT_EQ(memory_file_counts().views, 1);
    // There is no ".rtbz".
    EXPECT_EQ(dtz(queen_board(true, true)).success, PROBE_FAILED);
    EXPECT_EQ(wdl(queen_board(true, true)), (Answer{WDL_WIN, PROBE_GOOD}));
}

TEST_F(Mapping, AMissingSideHasNoAnswer) {
    use("KQvK.rtbw", constant_table(false, queen_header, 4, 0));
    EXPECT_EQ(wdl(queen_board(true, true)), (Answer{WDL_WIN, PROBE_GOOD}));
    EXPECT_EQ(wdl(queen_board(true, false)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(false, false)), (Answer{WDL_WIN, PROBE_GOOD}));
}

TEST_F(Mapping, BadHeadersAreCorrupted) {
    const std::string good = constant_table(true, queen_header, 4, 0);
    const auto changed = [&good](std::size_t offset, char value) {
        std::string bad = good;
        bad[offset] = value;
        return bad;
    };
    const std::string bad_files[] = {
        std::string(16, '\0'), std::string("\x71\xE8\x23\x5D", 4) + std::string(12, '\0'),
        changed(0, '\0'),      changed(5, '\x0F'), // the leading men never enter
        changed(6, '\x65'),                        // two queens
        changed(7, '\x57'),                        // no such type
        changed(8, '\x5E'),                        // second side: K, Q, Q
        changed(8, '\xE6'),                        // first side: K, Q, K
        changed(10, '\0'),                         // not constant, with nothing behind it
    };
    for (const std::string& bad : bad_files) {
        use("KQvK.rtbw", bad);
        testing::internal::CaptureStderr();
        EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
        EXPECT_EQ(memory_file_counts().views + memory_file_counts().mappings, 0);
        // The way that failed stays closed; the board with the colours exchanged tries once more.
        EXPECT_EQ(wdl(queen_board(true, false)), NO_ANSWER);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Corrupted table.\n");
        testing::internal::CaptureStderr();
        EXPECT_EQ(wdl(queen_board(false, true)), NO_ANSWER);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Corrupted table.\n");
    }
}

TEST_F(Mapping, ACodeWithoutASymbolIsCorrupted) {
    OneBitStream stream{2, 15, 0, 16384, 1, 12, 31331};
    use("KQvK.rtbw", one_bit_table(stream));
    EXPECT_EQ(wdl(queen_board(true, true)), (Answer{WDL_WIN, PROBE_GOOD}));
    stream.symbols = 1;
    use("KQvK.rtbw", one_bit_table(stream));
    testing::internal::CaptureStderr();
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Corrupted table.\n");
}

// An index entry far from the values that it stands for: the walk gives up in time.
TEST_F(Mapping, AWalkOverTooManyBlocksHasNoAnswer) {
    OneBitStream stream{2, 18, 199999, 0, 200000, 3, 3};
    use("KQvK.rtbw", one_bit_table(stream));
    EXPECT_EQ(wdl(queen_board(true, true)), (Answer{WDL_WIN, PROBE_GOOD}));
    stream.last_value = 0; // four times as far
    use("KQvK.rtbw", one_bit_table(stream));
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
}

TEST_F(Mapping, AFileEmptiedSinceItWasFoundIsCorrupted) {
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    put_memory_file("KQvK.rtbw", "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Corrupted table.\n");
}

TEST_F(Mapping, ABadValueHasNoAnswer) {
    use("KQvK.rtbw", constant_table(true, queen_header, 5, 255));
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(true, false)), NO_ANSWER);
}

TEST_F(Mapping, AFailedDistanceClosesTheValueToo) {
    put_memory_file("KQvK.rtbz", std::string(16, '\0'));
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    EXPECT_EQ(wdl(queen_board(true, true)), (Answer{WDL_WIN, PROBE_GOOD}));
    testing::internal::CaptureStderr();
    EXPECT_EQ(dtz(queen_board(true, true)).success, PROBE_FAILED);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Corrupted table.\n");
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(wdl(queen_board(false, true)), (Answer{WDL_LOSS, PROBE_GOOD}));
}

// A table knows nothing of en passant: what it holds for a position whose only legal move is such
// a capture is stalemate.
TEST_F(Mapping, AForcedCaptureEnPassantIsNoStalemate) {
    const std::string two_pawns = {'\0', '\x11', '\x11', '\x99', '\x66', '\xEE', '\x55'};
    const std::string one_pawn = {'\0', '\x99', '\x66', '\xEE', '\x55'};
    put_memory_file("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    put_memory_file("KQvKP.rtbw", constant_table(true, one_pawn, 4, 0, 4));
    use("KQPvKP.rtbw", constant_table(true, two_pawns, 2, 2, 4));
    const struct {
        const char* fen;
        Answer answer;
    } cases[] = {
        // Queen c2 and king e6 leave nothing but exd6, which loses.
        {"8/8/4k3/3pP3/8/8/2q5/K7 w - d6 0 1", {WDL_LOSS, PROBE_GOOD_BY_CAPTURE}},
        {"8/8/4k3/3pP3/8/8/2q5/K7 w - - 0 1", {WDL_DRAW, PROBE_GOOD}},
        // With a king's move besides, the table's word stands.
        {"8/8/4k3/3pP3/8/8/3q4/K7 w - d6 0 1", {WDL_DRAW, PROBE_GOOD}},
        // In check it is no stalemate either.
        {"8/8/5k2/6pP/7K/5q2/8/8 w - g6 0 1", {WDL_DRAW, PROBE_GOOD}},
    };
    for (const auto& c : cases) {
        ProbeBoard board;
        board_from_position(position_from(c.fen), board);
        EXPECT_EQ(wdl(board), c.answer) << c.fen;
        EXPECT_EQ(wdl(colours_exchanged(board)), c.answer) << c.fen;
    }
}

// A file that has gone since discovery fails without a word.
TEST_F(Mapping, AVanishedFileIsSilent) {
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    remove_memory_files();
    testing::internal::CaptureStderr();
    EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Boards that no game reaches have the material key of a table, but no place in it.
TEST_F(Mapping, ImpossibleBoardsHaveNoAnswer) {
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    ProbeBoard lonely = empty_board(true);
    put_man(lonely, {1, PROBE_KING}, A1);
    put_man(lonely, {1, PROBE_QUEEN}, B1);
    EXPECT_EQ(wdl(lonely), NO_ANSWER);
    ProbeBoard crowded = queen_board(true, true);
    put_man(crowded, {0, PROBE_KING}, H4);
    EXPECT_EQ(wdl(crowded), NO_ANSWER);
    ProbeBoard exchanged_kings = empty_board(false);
    put_man(exchanged_kings, {1, PROBE_KING}, A1);
    put_man(exchanged_kings, {1, PROBE_KING}, H3);
    put_man(exchanged_kings, {1, PROBE_QUEEN}, B5);
    EXPECT_EQ(wdl(exchanged_kings), NO_ANSWER);
}

TEST_F(Mapping, SystemFailuresEndTheProcess) {
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    make_fail(FailingOperation::MAPPING);
    EXPECT_EXIT(wdl(queen_board(true, true)), testing::ExitedWithCode(1),
                "^CreateFileMapping\\(\\) failed, error = 1234\\.\n"
                "Could not map KQvK\\.rtbw into memory\\.\n$");
    make_fail(FailingOperation::VIEW);
    EXPECT_EXIT(wdl(queen_board(false, true)), testing::ExitedWithCode(1),
                "^MapViewOfFile\\(\\) failed, error = 1234\\.\n"
                "Could not map KQvK\\.rtbw into memory\\.\n$");
}

TEST_F(Mapping, AReleaseThatFailsIsReported) {
    const struct {
        FailingOperation operation;
        const char* message;
    } cases[] = {
        {FailingOperation::UNMAP, "unmap failed, error code 1234\n"},
        {FailingOperation::CLOSE_MAPPING, "CloseHandle failed, error code 1234\n"},
    };
    for (const auto& c : cases) {
        use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
        EXPECT_EQ(wdl(queen_board(true, true)).success, PROBE_GOOD);
        make_fail(c.operation);
        testing::internal::CaptureStderr();
        syzygy_init("");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.message);
        make_fail(FailingOperation::NONE);
        EXPECT_EQ(wdl(queen_board(true, true)), NO_ANSWER);
    }
}

TEST_F(Mapping, AFileWithoutSizeIsIncomplete) {
    make_fail(FailingOperation::SIZE);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    use("KQvK.rtbw", constant_table(true, queen_header, 4, 0));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "info string Incomplete tablebase file KQvK.rtbw\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Incomplete tablebase file KQvK.rtbw\n");
    EXPECT_EQ(syzygy_max_men, 0U);
}

// Memory that runs out at any point of a probe makes that probe fail and leaves nothing behind.
TEST_F(Mapping, OutOfMemoryFailsTheProbe) {
    SKIP_WITHOUT_TABLES();
    for (const char* extension : {".rtbw", ".rtbz"}) {
        for (const char* name : {"KPvK", "KQvK", "KRvK", "KNvK", "KBvK"}) {
            const std::string file = std::string(name) + extension;
            put_memory_file(file, read_file(syzygy_directory() + "/" + file));
        }
    }
    ProbeBoard board = empty_board(true);
    put_man(board, {1, PROBE_KING}, C5);
    put_man(board, {0, PROBE_KING}, C7);
    put_man(board, {1, PROBE_PAWN}, B2);
    int failures = 0;
    for (int allowed = 0;; ++allowed) {
        syzygy_init(MEMORY_DIRECTORY);
        const int live_before = live_allocations;
        allocations_left = allowed;
        const Answer answer = dtz(board);
        allocations_left = -1;
        if (answer.success != PROBE_FAILED)
            break;
        ++failures;
        if (allowed == 0) {
            EXPECT_EQ(live_allocations, live_before);
            EXPECT_EQ(memory_file_counts().views, 0);
        }
    }
    EXPECT_GT(failures, 8); // each of the pawn's streams at least

    // All that the probes made is given back.
    syzygy_init("");
    const int live = live_allocations;
    syzygy_init(MEMORY_DIRECTORY);
    EXPECT_NE(dtz(board).success, PROBE_FAILED);
    syzygy_init("");
    EXPECT_EQ(live_allocations, live);
    EXPECT_EQ(memory_file_counts().views, 0);
}

} // namespace brindlemoth
