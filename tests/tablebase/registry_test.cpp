// Discovery: which signatures a path gives, in which order, and what is said about bad files.

#include "tablebase/probe_board.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

// All signatures of a shape: every text of letters whose sides go from strong to weak, and whose
// sides of equal length stand the stronger first.
void add_signatures(int first, int second, std::vector<std::string>& names) {
    const std::string letters = "QRBNP";
    const int length = first + second;
    int texts = 1;
    for (int i = 0; i < length; ++i)
        texts *= 5;
    for (int text = 0; text < texts; ++text) {
        std::vector<int> pieces(static_cast<std::size_t>(length));
        int rest = text;
        for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece, rest /= 5)
            *piece = rest % 5;
        const std::vector<int> one(pieces.begin(), pieces.begin() + first);
        const std::vector<int> two(pieces.begin() + first, pieces.end());
        if (!std::is_sorted(one.begin(), one.end()) || !std::is_sorted(two.begin(), two.end()) ||
            (first == second && two < one))
            continue;
        std::string name = "K";
        for (const int piece : one)
            name += letters[static_cast<std::size_t>(piece)];
        name += "vK";
        for (const int piece : two)
            name += letters[static_cast<std::size_t>(piece)];
        names.push_back(name);
    }
}

const std::vector<std::string>& all_signatures() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> list;
        constexpr int shapes[][2] = {{1, 0}, {1, 1}, {2, 0}, {2, 1}, {3, 0}, {2, 2},
                                     {3, 1}, {4, 0}, {5, 0}, {4, 1}, {3, 2}};
        for (const auto& shape : shapes)
            add_signatures(shape[0], shape[1], list);
        return list;
    }();
    return names;
}

bool has_pawns(const std::string& signature) {
    return signature.find('P') != std::string::npos;
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

// Views of files of a directory in this process.
int mapped_files(const std::string& directory) {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);)
        count += line.find(directory) != std::string::npos ? 1 : 0;
    return count;
}

struct Output {
    std::string out;
    std::string err;
};

Output init_output(const std::string& path) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(syzygy_init(path.c_str()));
    Output output;
    output.out = testing::internal::GetCapturedStdout();
    output.err = testing::internal::GetCapturedStderr();
    return output;
}

// Leaves no tables behind for the next test.
struct Registry : testing::Test {
    void TearDown() override { syzygy_init(""); }
};

} // namespace

TEST_F(Registry, KnowsAllSignaturesInOrder) {
    ASSERT_EQ(all_signatures().size(), 1511U);
    const TemporaryDirectory directory;
    std::string out;
    std::string err;
    for (const std::string& name : all_signatures()) {
        write_blank_file(directory.file(name + ".rtbw"), 17);
        err += "Incomplete tablebase file " + name + ".rtbw\n";
        out += "info string Incomplete tablebase file " + name + ".rtbw\n";
    }
    const Output output = init_output(directory.path);
    EXPECT_EQ(output.err, err);
    EXPECT_EQ(output.out, out);
    EXPECT_EQ(syzygy_max_men, 0U);
    EXPECT_EQ(occupied_slots(), 0);
}

TEST_F(Registry, HoldsAllSignatures) {
    const TemporaryDirectory directory;
    for (const std::string& name : all_signatures())
        write_blank_file(directory.file(name + ".rtbw"), 16);
    const Output output = init_output(directory.path);
    EXPECT_EQ(output.out + output.err, "");
    EXPECT_EQ(syzygy_max_men, 7U);
    ASSERT_EQ(piece_entry_count, 650);
    ASSERT_EQ(pawn_entry_count, 861);
    int pieces = 0;
    int pawns = 0;
    int slots = 0;
    for (const std::string& name : all_signatures()) {
        const TableEntry* const entry = has_pawns(name)
                                            ? static_cast<const TableEntry*>(&pawn_entries[pawns++])
                                            : &piece_entries[pieces++];
        const bool symmetric = key_of(name) == key_of(name, true);
        ASSERT_EQ(entry->key, key_of(name)) << name;
        ASSERT_EQ(entry, entry_of(name));
        ASSERT_EQ(entry, table_slot(key_of(name, true)).entry);
        ASSERT_EQ(entry->men, name.size() - 1) << name;
        ASSERT_EQ(entry->symmetric, symmetric) << name;
        ASSERT_EQ(entry->has_dtz, 0);
        slots += symmetric ? 1 : 2;
    }
    EXPECT_EQ(occupied_slots(), slots);
    EXPECT_EQ(table_slot(key_of("KPvKP") + 1).entry, nullptr);

    // Another path forgets them all, and so does none.
    const TemporaryDirectory other;
    write_blank_file(other.file("KRvKR.rtbw"), 80);
    syzygy_init(other.path.c_str());
    EXPECT_EQ(syzygy_max_men, 4U);
    EXPECT_EQ(occupied_slots(), 1);
    EXPECT_EQ(entry_of("KPvKP"), nullptr);
    syzygy_init("<empty>");
    EXPECT_EQ(syzygy_max_men, 0U);
    EXPECT_EQ(occupied_slots() + piece_entry_count + pawn_entry_count, 0);
}

TEST_F(Registry, PropertiesOfSignatures) {
    const TemporaryDirectory directory;
    const struct {
        const char* name;
        int two_king_scheme;
        int lead_pawns;
        int other_pawns;
    } cases[] = {
        {"KNNvK", 1, -1, -1},   {"KQRvK", 0, -1, -1},  {"KQQvKRR", 1, -1, -1},
        {"KRRvKBB", 1, -1, -1}, {"KQQvKR", 0, -1, -1}, {"KPPvKP", -1, 1, 2},
        {"KPPvK", -1, 2, 0},    {"KPPvKPP", -1, 2, 2}, {"KQvKP", -1, 1, 0},
        {"KQPvKPP", -1, 1, 2},  {"KPPPvKP", -1, 1, 3}, {"KRvKPP", -1, 2, 0},
    };
    for (const auto& c : cases)
        write_blank_file(directory.file(c.name + std::string(".rtbw")), 16);
    syzygy_init(directory.path.c_str());
    for (const auto& c : cases) {
        const TableEntry* const entry = entry_of(c.name);
        // A side that is never named first, as in KRvKPP, is not a signature.
        if (std::find(all_signatures().begin(), all_signatures().end(), c.name) ==
            all_signatures().end()) {
            EXPECT_EQ(entry, nullptr) << c.name;
            continue;
        }
        ASSERT_NE(entry, nullptr) << c.name;
        if (c.two_king_scheme >= 0) {
            EXPECT_EQ(entry->has_pawns, 0) << c.name;
            EXPECT_EQ(entry->two_king_scheme, c.two_king_scheme) << c.name;
        } else {
            EXPECT_EQ(entry->has_pawns, 1) << c.name;
            EXPECT_EQ(entry->lead_pawns, c.lead_pawns) << c.name;
            EXPECT_EQ(entry->other_pawns, c.other_pawns) << c.name;
        }
    }
}

TEST_F(Registry, OnlyTheFilesThatAreThere) {
    const TemporaryDirectory directory;
    write_blank_file(directory.file("KQvK.rtbw"), 16);
    write_blank_file(directory.file("KRvK.rtbz"), 16);   // no .rtbw: not registered
    write_blank_file(directory.file("KQvKRR.rtbw"), 16); // not the name of a signature
    std::filesystem::create_directory(directory.file("KPvK.rtbw"));
    EXPECT_EQ(init_output(directory.path).out, "");
    EXPECT_EQ(syzygy_max_men, 3U);
    EXPECT_EQ(piece_entry_count, 1);
    EXPECT_EQ(pawn_entry_count, 0);
    EXPECT_EQ(occupied_slots(), 2);
    EXPECT_EQ(piece_entries[0].has_dtz + piece_entries[0].has_dtm, 0);

    write_blank_file(directory.file("KQvK.rtbz"), 80);
    write_blank_file(directory.file("KQvK.rtbm"), 16 + 128);
    syzygy_init(directory.path.c_str());
    EXPECT_EQ(piece_entries[0].has_dtz + piece_entries[0].has_dtm, 2);
    EXPECT_EQ(max_men_dtm, 3);
}

TEST_F(Registry, ReportsIncompleteFiles) {
    const TemporaryDirectory directory;
    write_blank_file(directory.file("KQvK.rtbw"), 16);
    write_blank_file(directory.file("KQvK.rtbm"), 0);
    write_blank_file(directory.file("KQvK.rtbz"), 64);
    write_blank_file(directory.file("KPvK.rtbw"), 79);
    write_blank_file(directory.file("KPvK.rtbz"), 15); // not looked at
    const Output output = init_output(directory.path);
    EXPECT_EQ(output.err, "Incomplete tablebase file KQvK.rtbm\n"
                          "Incomplete tablebase file KQvK.rtbz\n"
                          "Incomplete tablebase file KPvK.rtbw\n");
    EXPECT_EQ(output.out, "info string Incomplete tablebase file KQvK.rtbm\n"
                          "info string Incomplete tablebase file KQvK.rtbz\n"
                          "info string Incomplete tablebase file KPvK.rtbw\n");
    EXPECT_EQ(syzygy_max_men, 3U);
    EXPECT_EQ(entry_of("KQvK")->has_dtz, 0);
    EXPECT_EQ(entry_of("KPvK"), nullptr);
}

TEST_F(Registry, SplitsThePath) {
    const TemporaryDirectory one;
    const TemporaryDirectory two;
    write_blank_file(one.file("KQvK.rtbw"), 16);
    write_blank_file(two.file("KRvK.rtbw"), 16);
    // The first directory that has a file is the one that counts, even if the file is bad.
    write_blank_file(one.file("KBvK.rtbw"), 17);
    write_blank_file(two.file("KBvK.rtbw"), 16);
    const struct {
        std::string path;
        bool queen;
        bool rook;
        bool bishop;
    } cases[] = {
        {one.path, true, false, false},
        {one.path + ";" + two.path, true, true, false},
        {two.path + ";" + one.path, true, true, true},
        {one.path + ";;" + two.path, true, true, false},
        {";" + two.path + ";", false, true, true},
        {";;;", false, false, false},
        {one.path + "/no/such/place;" + two.path, false, true, true},
        {" " + one.path + ";" + two.path, false, true, true}, // a blank is part of a name
        {two.path + "/", false, true, true},
        {one.path + ":" + two.path, false, false, false},
        {"<empty>;" + two.path, false, true, true},
        {std::string(5000, 'x') + ";" + one.path, true, false, false},
    };
    for (const auto& c : cases) {
        init_output(c.path);
        EXPECT_EQ(entry_of("KQvK") != nullptr, c.queen) << c.path;
        EXPECT_EQ(entry_of("KRvK") != nullptr, c.rook) << c.path;
        EXPECT_EQ(entry_of("KBvK") != nullptr, c.bishop) << c.path;
    }
}

TEST_F(Registry, MapsAtTheFirstProbeAndLetsGo) {
    SKIP_WITHOUT_TABLES();
    const std::string directory = syzygy_directory();
    std::mt19937 random(3);
    for (int round = 0; round < 3; ++round) {
        syzygy_init(directory.c_str());
        EXPECT_EQ(mapped_files(directory), 0);
        int probed = 0;
        for (const std::string& name : four_men_signatures()) {
            int success;
            syzygy_dtz(random_board(name, random), success);
            EXPECT_NE(success, 0) << name;
            ++probed;
        }
        EXPECT_GE(mapped_files(directory), probed);
        if (round == 0) {
            syzygy_init((directory + "/nothing").c_str());
            EXPECT_EQ(mapped_files(directory), 0);
            EXPECT_EQ(syzygy_max_men, 0U);
        }
    }
    syzygy_init("");
    EXPECT_EQ(mapped_files(directory), 0);
}

} // namespace brindlemoth
