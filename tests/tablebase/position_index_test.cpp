// The numbering of positions, for every signature: the engine finds for a board, and for all its
// reflections, the index that the generator made it from.

#include "tablebase/memory_files.h"
#include "tablebase/position_index.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_file.h"
#include "tablebase/table_support.h"
#include "tablegen/plain_table.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

// The file position of a board and its index there.
static std::pair<int, std::uint64_t> place_of(const ProbeBoard& board, TableEntry& entry) {
    int squares[MAX_TABLE_MEN];
    int table = 0;
    const SideEncoding* encoding = syzygy_first_encoding(entry, KIND_WDL);
    int start = 0;
    if (entry.has_pawns != 0) {
        start = syzygy_collect_squares(board, *encoding, 0, entry.lead_pawns, false, 0, squares);
        table = syzygy_pick_lead_pawn(squares, entry.lead_pawns);
        encoding += table;
    }
    EXPECT_EQ(syzygy_collect_squares(board, *encoding, start, entry.men, false, 0, squares),
              entry.men);
    return {table, syzygy_position_index(squares, *encoding, entry)};
}

TEST(PositionIndex, IsTheOneThatTheGeneratorCountsBy) {
    std::mt19937_64 random(9);
    std::vector<tablegen::StreamOrder> orders; // one for each signature
    remove_memory_files();
    for (const std::string& name : all_signatures()) {
        const auto possible = tablegen::possible_orders(*tablegen::parse_signature(name));
        orders.push_back(possible[random() % possible.size()]);
        put_memory_file(name + ".rtbw", bytes_of(constant_table(name, {2}, &orders.back())));
    }
    syzygy_init(MEMORY_DIRECTORY);
    auto order = orders.begin();
    for (const std::string& name : all_signatures()) {
        int counts[16];
        count_signature_men(name.c_str(), counts);
        TableEntry& entry = *table_slot(material_key_of_counts(counts, false)).entry;
        ASSERT_TRUE(syzygy_map_table(entry, name.c_str(), KIND_WDL)) << name;
        for (int table = 0; table < file_positions(entry); ++table) {
            const auto numbering = make_numbering(*tablegen::parse_signature(name), table, *order);
            for (unsigned how = 0; how < 8; ++how) {
                const std::uint64_t index = random() % numbering.positions;
                const ProbeBoard board = board_at(walk_from(numbering, index));
                const auto place = place_of(image(board, how), entry);
                // Leading men on the diagonal, and leading pawns side by side in the middle, leave
                // two images that have indices of their own.
                const bool twin =
                    place.second < numbering.positions &&
                    board_text(image(board_at(walk_from(numbering, place.second)),
                                     entry.has_pawns != 0 ? 1 : 4)) == board_text(board);
                EXPECT_TRUE(place == std::pair(table, index) || twin)
                    << name << ": " << board_text(board) << ", image " << how;
            }
        }
        if (name == "KNNvK") { // kings that touch
            EXPECT_EQ(place_of(board_from("8/8/8/4kK2/8/8/8/1NN5 w - - 0 1"), entry).second,
                      NO_INDEX);
        }
        syzygy_unmap_table(entry, KIND_WDL);
        ++order;
    }
    syzygy_init("");
}
