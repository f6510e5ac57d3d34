// Damaged tables: for any content of a file, a probe ends and reads nothing outside the file. The
// files are in memory. One program tries all the damage, another a part of it.

#include "support/support.h"
#include "tablebase/memory_files.h"
#include "tablebase/probe.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

using namespace brindlemoth;

constexpr std::size_t POSITIONS = 200;
constexpr std::size_t DISTANCE_PROBES = 8; // one position in this many is probed for its distance
constexpr std::size_t HEAD = 256;
constexpr std::size_t TABLE_TAIL = 16;
// Each byte of the head is XORed with 1 and the numbers above it in steps.
constexpr unsigned FLIP_STEP = ALL_DAMAGE ? 1 : 127;
constexpr int RANDOM_CHANGES = ALL_DAMAGE ? 5000 : 200; // single bytes anywhere
constexpr std::size_t TRUNCATION_STEP = ALL_DAMAGE ? 64 : 64 * 61;

// Unmaps the files of a signature and clears its failure marks. Other tables stay mapped.
static void map_again(const std::string& signature) {
    int counts[16];
    count_signature_men(signature.c_str(), counts);
    for (const bool mirror : {false, true}) {
        TableHashSlot& slot = table_slot(material_key_of_counts(counts, mirror));
        slot.failed = 0;
        syzygy_release_entry(*slot.entry);
    }
}

// Probes all positions in every way that reads the files; returns how many answers there were.
static std::size_t probe_all(const std::vector<ProbeBoard>& boards) {
    std::size_t answers = 0;
    for (std::size_t i = 0; i < boards.size(); ++i) {
        int success;
        const int value = syzygy_wdl(boards[i], success);
        answers += success != PROBE_FAILED ? 1 : 0;
        EXPECT_TRUE(success == PROBE_FAILED || (value >= WDL_LOSS && value <= WDL_WIN));
        // Use every value map, also those for other WDL values than that of the position.
        for (int wdl = WDL_LOSS; wdl <= WDL_WIN; ++wdl)
            syzygy_probe_table(boards[i], wdl, success, KIND_DTZ);
        if (i % DISTANCE_PROBES != 0)
            continue;
        syzygy_dtz(boards[i], success);
        answers += success != PROBE_FAILED ? 1 : 0;
    }
    return answers;
}

// Damages a copy of a table file in each of these ways, and probes it at 200 positions.
static void damage(const std::string& file) {
    SCOPED_TRACE(file);
    put_made_tables();
    ASSERT_TRUE(syzygy_init(MEMORY_DIRECTORY));
    const std::string signature = file.substr(0, file.find('.'));
    std::mt19937 random(17);
    std::vector<ProbeBoard> boards;
    while (boards.size() < POSITIONS)
        boards.push_back(random_board(signature, random));
    ASSERT_EQ(probe_all(boards), POSITIONS + POSITIONS / DISTANCE_PROBES)
        << "the file as it is made";

    const std::string content = read_file(tables_directory() + "/" + file);
    std::uint8_t* const bytes = memory_file_bytes(file);
    const auto probe_changed = [&](std::size_t offset, unsigned flip) {
        map_again(signature);
        bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ flip);
        probe_all(boards);
        bytes[offset] = static_cast<std::uint8_t>(bytes[offset] ^ flip);
    };

    testing::internal::CaptureStderr();
    for (std::size_t offset = 0; offset < std::min(HEAD, content.size()); ++offset) {
        for (unsigned flip = 1; flip < 256; flip += FLIP_STEP)
            probe_changed(offset, flip);
    }
    for (int i = 0; i < RANDOM_CHANGES; ++i)
        probe_changed(random() % content.size(), static_cast<unsigned>(1 + random() % 255));
    map_again(signature);
    EXPECT_EQ(probe_all(boards), POSITIONS + POSITIONS / DISTANCE_PROBES) << "the file as it was";

    for (std::size_t size = TABLE_TAIL; size < content.size(); size += TRUNCATION_STEP) {
        map_again(signature);
        put_memory_file(file, content.substr(0, size));
        probe_all(boards);
    }
    // All messages are the same.
    std::istringstream complaints(testing::internal::GetCapturedStderr());
    int count = 0;
    for (std::string line; std::getline(complaints, line); ++count)
        ASSERT_EQ(line, "Corrupted table.");
    EXPECT_GT(count, 0);
    syzygy_init("");
    EXPECT_EQ(memory_file_uses(), 0);
}

TEST(Corruption, EveryProbeEnds) {
    for (const char* const file : {"KPvKP.rtbw", "KQvKP.rtbz", "KNNvK.rtbw"})
        damage(file);
    for (const std::string& name : signatures_of(3))
        for (const char* const extension : {".rtbw", ".rtbz"})
            damage(name + extension);
}
