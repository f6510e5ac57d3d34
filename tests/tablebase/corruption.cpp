// Damaged tables: whatever stands in a file, a probe ends, and reads nothing outside it. The files
// stand in memory. One program does all the damage, another a part of it.

#include "tablebase/memory_files.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace brindlemoth {

namespace {

constexpr int POSITIONS = 200;
constexpr std::size_t DISTANCE_PROBES = 8; // every how manyth position is searched for its distance
constexpr std::size_t HEAD = 256;
constexpr std::size_t TABLE_TAIL = 16;
// Each byte of the head is XORed with 1 and the numbers above it in steps.
constexpr unsigned FLIP_STEP = ALL_DAMAGE ? 1 : 127;
constexpr int RANDOM_CHANGES = ALL_DAMAGE ? 5000 : 200; // single bytes elsewhere
constexpr std::size_t TRUNCATION_STEP = ALL_DAMAGE ? 64 : 64 * 61;

// Forgets that the file was mapped, or that it could not be. The other tables stay.
void map_again(const std::string& signature) {
    int counts[16];
    count_signature_men(signature.c_str(), counts);
    for (const bool mirror : {false, true}) {
        TableHashSlot& slot = table_slot(material_key_of_counts(counts, mirror));
        slot.failed = 0;
        syzygy_release_entry(*slot.entry);
    }
}

// Probes all positions in every way that reads the file; returns how many got an answer.
int probe_all(const std::vector<ProbeBoard>& boards, bool distances) {
    int answers = 0;
    for (std::size_t i = 0; i < boards.size(); ++i) {
        const ProbeBoard& board = boards[i];
        int success;
        if (!distances) {
            const int value = syzygy_wdl(board, success);
            EXPECT_TRUE(success == PROBE_FAILED || (value >= WDL_LOSS && value <= WDL_WIN));
            answers += success != PROBE_FAILED ? 1 : 0;
            continue;
        }
        // Every way through the value maps, also where the value would not lead into the table.
        for (int wdl = WDL_LOSS; wdl <= WDL_WIN; ++wdl) {
            success = PROBE_GOOD;
            syzygy_probe_table(board, wdl, success, KIND_DTZ);
        }
        success = PROBE_GOOD;
        if (i % DISTANCE_PROBES == 0)
            syzygy_dtz(board, success);
        answers += success != PROBE_FAILED ? 1 : 0;
    }
    return answers;
}

std::vector<std::string> damaged_files() {
    std::vector<std::string> list = {"KPvKP.rtbw", "KQvKP.rtbz", "KNNvK.rtbw"};
    for (const std::string& name : three_men_signatures()) {
        list.push_back(name + ".rtbw");
        list.push_back(name + ".rtbz");
    }
    return list;
}

} // namespace

using Corruption = testing::TestWithParam<std::string>;

// Damages a copy of the genuine file in each of these ways, and probes it at 200 positions.
TEST_P(Corruption, EveryProbeEnds) {
    SKIP_WITHOUT_TABLES();
    const std::string file = GetParam();
    put_genuine_tables();
    ASSERT_TRUE(syzygy_init(MEMORY_DIRECTORY));
    const std::string signature = file.substr(0, file.find('.'));
    const bool distances = file.back() == 'z';
    std::mt19937 random(17);
    std::vector<ProbeBoard> boards;
    for (int i = 0; i < POSITIONS; ++i)
        boards.push_back(random_board(signature, random));
    ASSERT_EQ(probe_all(boards, distances), POSITIONS) << "the genuine file";

    const std::string genuine = read_file(syzygy_directory() + "/" + file);
    std::uint8_t* const bytes = memory_file_bytes(file);
    const auto probe_changed = [&](std::size_t offset, unsigned flip) {
        map_again(signature);
        bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ flip);
        probe_all(boards, distances);
        bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ flip);
    };

    testing::internal::CaptureStderr();
    for (std::size_t offset = 0; offset < std::min(HEAD, genuine.size()); ++offset) {
        for (unsigned flip = 1; flip < 256; flip += FLIP_STEP)
            probe_changed(offset, flip);
    }
    if (genuine.size() > HEAD) {
        for (int i = 0; i < RANDOM_CHANGES; ++i)
            probe_changed(HEAD + random() % (genuine.size() - HEAD),
                          static_cast<unsigned>(1 + random() % 255));
    }
    map_again(signature);
    EXPECT_EQ(probe_all(boards, distances), POSITIONS) << "the file as it was";

    for (std::size_t size = TABLE_TAIL; size < genuine.size(); size += TRUNCATION_STEP) {
        map_again(signature);
        put_memory_file(file, genuine.substr(0, size));
        probe_all(boards, distances);
    }
    // All complaints are of one kind.
    std::istringstream complaints(testing::internal::GetCapturedStderr());
    int count = 0;
    for (std::string line; std::getline(complaints, line); ++count)
        ASSERT_EQ(line, "Corrupted table.");
    EXPECT_GT(count, 0);
    syzygy_init("");
    EXPECT_EQ(memory_file_uses(), 0);
}

INSTANTIATE_TEST_SUITE_P(Tables, Corruption, testing::ValuesIn(damaged_files()),
                         [](const auto& test) {
                             std::string name = test.param;
                             name[name.find('.')] = '_';
                             return name;
                         });

} // namespace brindlemoth
