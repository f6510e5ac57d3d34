// Discovery: the signatures that a path gives, their order, and the messages about bad files.

#include "tablebase/probe_board.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

using namespace brindlemoth;

static Key key_of(const std::string& signature, bool mirror = false) {
    int counts[16];
    count_signature_men(signature.c_str(), counts);
    return material_key_of_counts(counts, mirror);
}

const TableEntry* entry_of(const std::string& signature) {
    return table_slot(key_of(signature)).entry;
}

static int occupied_slots() {
    return static_cast<int>(
        std::count_if(table_hash, table_hash + TABLE_HASH_SIZE,
                      [](const TableHashSlot& slot) { return slot.entry != nullptr; }));
}

// The messages on standard output and standard error while the path is set.
static std::string init_output(const std::string& path) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(syzygy_init(path.c_str()));
    const std::string out = testing::internal::GetCapturedStdout();
    return out + testing::internal::GetCapturedStderr();
}

static std::string complaints(const std::vector<std::string>& files) {
    std::string out;
    std::string err;
    for (const std::string& file : files) {
        out += "info string Incomplete tablebase file " + file + "\n";
        err += "Incomplete tablebase file " + file + "\n";
    }
    return out + err;
}

// Leaves no tables behind for the next test.
struct Registry : testing::Test {
    void TearDown() override { syzygy_init(""); }
};

TEST_F(Registry, KnowsAllSignaturesInOrder) {
    ASSERT_EQ(all_signatures().size(), 1511U);
    const TemporaryDirectory directory;
    const auto write_all = [&directory](std::size_t size) {
        std::vector<std::string> files;
        for (const std::string& name : all_signatures()) {
            files.push_back(name + ".rtbw");
            directory.write(files.back(), std::string(size, '\0'));
        }
        return files;
    };
    const std::vector<std::string> files = write_all(17);
    EXPECT_EQ(init_output(directory.path), complaints(files));
    EXPECT_EQ(syzygy_max_men, 0U);
    EXPECT_EQ(occupied_slots(), 0);

    write_all(16);
    EXPECT_EQ(init_output(directory.path), "");
    EXPECT_EQ(syzygy_max_men, 7U);
    ASSERT_EQ(piece_entry_count, 650);
    ASSERT_EQ(pawn_entry_count, 861);
    int slots = 0;
    for (const std::string& name : all_signatures()) {
        const bool symmetric = key_of(name) == key_of(name, true);
        const TableEntry* const entry = entry_of(name);
        ASSERT_NE(entry, nullptr) << name;
        ASSERT_EQ(entry->key, key_of(name)) << name;
        ASSERT_EQ(entry, table_slot(key_of(name, true)).entry) << name;
        ASSERT_EQ(entry->symmetric, symmetric) << name;
        ASSERT_EQ(entry->has_dtz, 0) << name;
        slots += symmetric ? 1 : 2;
    }
    EXPECT_EQ(occupied_slots(), slots);
    EXPECT_EQ(table_slot(key_of("KPvKP") + 1).entry, nullptr);

    syzygy_init("<empty>");
    EXPECT_EQ(syzygy_max_men, 0U);
    EXPECT_EQ(occupied_slots() + piece_entry_count + pawn_entry_count, 0);
}

TEST_F(Registry, OnlyTheFilesThatAreThere) {
    const TemporaryDirectory directory;
    directory.write("KQvK.rtbw", std::string(16, '\0'));
    directory.write("KRvK.rtbz", std::string(16, '\0'));   // no .rtbw: not registered
    directory.write("KQvKRR.rtbw", std::string(16, '\0')); // not the name of a signature
    std::filesystem::create_directory(directory.file("KPvKP.rtbw"));
    directory.write("KQvK.rtbm", "");
    directory.write("KQvK.rtbz", std::string(64, '\0'));
    directory.write("KPvK.rtbw", std::string(79, '\0'));
    directory.write("KPvK.rtbz", std::string(15, '\0')); // not looked at
    EXPECT_EQ(init_output(directory.path), complaints({"KQvK.rtbm", "KQvK.rtbz", "KPvK.rtbw"}));
    EXPECT_EQ(syzygy_max_men, 3U);
    EXPECT_EQ(piece_entry_count, 1);
    EXPECT_EQ(pawn_entry_count, 0);
    EXPECT_EQ(occupied_slots(), 2);
    EXPECT_EQ(piece_entries[0].has_dtz + piece_entries[0].has_dtm, 0);

    directory.write("KQvK.rtbz", std::string(80, '\0'));
    directory.write("KQvK.rtbm", std::string(16 + 128, '\0'));
    EXPECT_EQ(init_output(directory.path), complaints({"KPvK.rtbw"}));
    EXPECT_EQ(piece_entries[0].has_dtz + piece_entries[0].has_dtm, 2);
    EXPECT_EQ(max_men_dtm, 3);
}

TEST_F(Registry, SplitsThePath) {
    const TemporaryDirectory one;
    const TemporaryDirectory two;
    one.write("KQvK.rtbw", std::string(16, '\0'));
    two.write("KRvK.rtbw", std::string(16, '\0'));
    // The first directory that has a file is the one that counts, even if the file is bad.
    one.write("KBvK.rtbw", std::string(17, '\0'));
    two.write("KBvK.rtbw", std::string(16, '\0'));
    const std::pair<std::string, std::string> cases[] = {
        {one.path, "Q"},
        {one.path + ";" + two.path, "QR"},
        {two.path + ";" + one.path, "QRB"},
        {one.path + ";;" + two.path, "QR"},
        {";" + two.path + ";", "RB"},
        {one.path + "/no/such/place;" + two.path, "RB"},
        {" " + one.path + ";" + two.path, "RB"}, // a blank is part of a name
        {one.path + ":" + two.path, ""},
        {"<empty>;" + two.path, "RB"},
        {std::string(5000, 'x') + ";" + one.path, "Q"},
    };
    for (const auto& [path, expected] : cases) {
        init_output(path);
        std::string found;
        for (const char letter : {'Q', 'R', 'B'})
            found.append(entry_of(std::string("K") + letter + "vK") != nullptr ? 1 : 0, letter);
        EXPECT_EQ(found, expected) << path;
    }
}
