// Discovery: which signatures a path gives, in which order, and what is said about bad files.

#include "tablebase/probe_board.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

std::string blank(std::size_t size) {
    return std::string(size, '\0');
}

Key key_of(const std::string& signature, bool mirror = false) {
    int counts[16];
    count_signature_men(signature.c_str(), counts);
    return material_key_of_counts(counts, mirror);
}

const TableEntry* entry_of(const std::string& signature) {
    return table_slot(key_of(signature)).entry;
}

int occupied_slots() {
    return static_cast<int>(
        std::count_if(table_hash, table_hash + TABLE_HASH_SIZE,
                      [](const TableHashSlot& slot) { return slot.entry != nullptr; }));
}

// What is said on both outputs while the path is taken.
std::string init_output(const std::string& path) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(syzygy_init(path.c_str()));
    const std::string out = testing::internal::GetCapturedStdout();
    return out + testing::internal::GetCapturedStderr();
}

std::string complaints(const std::vector<std::string>& files) {
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

} // namespace

TEST_F(Registry, KnowsAllSignaturesInOrder) {
    ASSERT_EQ(all_signatures().size(), 1511U);
    const TemporaryDirectory directory;
    std::vector<std::string> files;
    for (const std::string& name : all_signatures()) {
        files.push_back(name + ".rtbw");
        directory.write(files.back(), blank(17));
    }
    EXPECT_EQ(init_output(directory.path), complaints(files));
    EXPECT_EQ(syzygy_max_men, 0U);
    EXPECT_EQ(occupied_slots(), 0);
}

TEST_F(Registry, HoldsAllSignatures) {
    const TemporaryDirectory directory;
    for (const std::string& name : all_signatures())
        directory.write(name + ".rtbw", blank(16));
    EXPECT_EQ(init_output(directory.path), "");
    EXPECT_EQ(syzygy_max_men, 7U);
    ASSERT_EQ(piece_entry_count, 650);
    ASSERT_EQ(pawn_entry_count, 861);
    int pieces = 0;
    int pawns = 0;
    int slots = 0;
    for (const std::string& name : all_signatures()) {
        SCOPED_TRACE(name);
        int counts[16] = {};
        for (const Man man : signature_men(name))
            ++counts[man.type + (man.white == 1 ? 0 : 8)];
        const bool has_pawns = counts[1] + counts[9] > 0;
        const TableEntry* const entry = has_pawns
                                            ? static_cast<const TableEntry*>(&pawn_entries[pawns++])
                                            : &piece_entries[pieces++];
        const bool symmetric = key_of(name) == key_of(name, true);
        ASSERT_EQ(entry->key, key_of(name));
        ASSERT_EQ(entry, entry_of(name));
        ASSERT_EQ(entry, table_slot(key_of(name, true)).entry);
        ASSERT_EQ(entry->men, name.size() - 1);
        ASSERT_EQ(entry->symmetric, symmetric);
        ASSERT_EQ(entry->has_dtz, 0);
        ASSERT_EQ(entry->has_pawns, has_pawns);
        if (has_pawns) {
            // The side with fewer pawns leads, if it has any.
            const int lead = counts[9] > 0 && (counts[1] == 0 || counts[9] < counts[1]) ? 9 : 1;
            ASSERT_EQ(entry->lead_pawns, counts[lead]);
            ASSERT_EQ(entry->other_pawns, counts[10 - lead]);
        } else {
            // The kings lead where no man but they is alone of its kind.
            ASSERT_EQ(entry->two_king_scheme, std::count(counts, counts + 16, 1) == 2);
        }
        slots += symmetric ? 1 : 2;
    }
    EXPECT_EQ(occupied_slots(), slots);
    EXPECT_EQ(table_slot(key_of("KPvKP") + 1).entry, nullptr);

    // Another path forgets them all, and so does none.
    const TemporaryDirectory other;
    other.write("KRvKR.rtbw", blank(80));
    syzygy_init(other.path.c_str());
    EXPECT_EQ(syzygy_max_men, 4U);
    EXPECT_EQ(occupied_slots(), 1);
    EXPECT_EQ(entry_of("KPvKP"), nullptr);
    syzygy_init("<empty>");
    EXPECT_EQ(syzygy_max_men, 0U);
    EXPECT_EQ(occupied_slots() + piece_entry_count + pawn_entry_count, 0);
}

TEST_F(Registry, OnlyTheFilesThatAreThere) {
    const TemporaryDirectory directory;
    directory.write("KQvK.rtbw", blank(16));
    directory.write("KRvK.rtbz", blank(16));   // no .rtbw: not registered
    directory.write("KQvKRR.rtbw", blank(16)); // not the name of a signature
    std::filesystem::create_directory(directory.file("KPvKP.rtbw"));
    directory.write("KQvK.rtbm", "");
    directory.write("KQvK.rtbz", blank(64));
    directory.write("KPvK.rtbw", blank(79));
    directory.write("KPvK.rtbz", blank(15)); // not looked at
    EXPECT_EQ(init_output(directory.path), complaints({"KQvK.rtbm", "KQvK.rtbz", "KPvK.rtbw"}));
    EXPECT_EQ(syzygy_max_men, 3U);
    EXPECT_EQ(piece_entry_count, 1);
    EXPECT_EQ(pawn_entry_count, 0);
    EXPECT_EQ(occupied_slots(), 2);
    EXPECT_EQ(piece_entries[0].has_dtz + piece_entries[0].has_dtm, 0);

    directory.write("KQvK.rtbz", blank(80));
    directory.write("KQvK.rtbm", blank(16 + 128));
    EXPECT_EQ(init_output(directory.path), complaints({"KPvK.rtbw"}));
    EXPECT_EQ(piece_entries[0].has_dtz + piece_entries[0].has_dtm, 2);
    EXPECT_EQ(max_men_dtm, 3);
}

TEST_F(Registry, SplitsThePath) {
    const TemporaryDirectory one;
    const TemporaryDirectory two;
    one.write("KQvK.rtbw", blank(16));
    two.write("KRvK.rtbw", blank(16));
    // The first directory that has a file is the one that counts, even if the file is bad.
    one.write("KBvK.rtbw", blank(17));
    two.write("KBvK.rtbw", blank(16));
    const struct {
        std::string path;
        std::string found;
    } cases[] = {
        {one.path, "Q"},
        {one.path + ";" + two.path, "QR"},
        {two.path + ";" + one.path, "QRB"},
        {one.path + ";;" + two.path, "QR"},
        {";" + two.path + ";", "RB"},
        {";;;", ""},
        {one.path + "/no/such/place;" + two.path, "RB"},
        {" " + one.path + ";" + two.path, "RB"}, // a blank is part of a name
        {two.path + "/", "RB"},
        {one.path + ":" + two.path, ""},
        {"<empty>;" + two.path, "RB"},
        {std::string(5000, 'x') + ";" + one.path, "Q"},
    };
    for (const auto& c : cases) {
        init_output(c.path);
        std::string found;
        for (const char letter : {'Q', 'R', 'B'})
            found.append(entry_of(std::string("K") + letter + "vK") != nullptr ? 1 : 0, letter);
        EXPECT_EQ(found, c.found) << c.path;
    }
}

} // namespace brindlemoth
