// The numbering of positions: blind to exactly the symmetries of the board. That of up to four men
// is proved by the genuine tables besides.

#include "board/bitboard.h"
#include "tablebase/memory_files.h"
#include "tablebase/position_index.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_file.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

// A signature with the header that a table of it has: the turn of the first group, with pawns on
// both sides that of the others, and the men by piece code.
struct IndexCase {
    const char* signature;
    std::string header;
};

// The entry of a mapped table of that shape; null on failure.
TableEntry* entry_of(const IndexCase& c) {
    int counts[16];
    count_signature_men(c.signature, counts);
    remove_memory_files();
    put_memory_file(c.signature + std::string(".rtbw"),
                    constant_table(false, c.header, 2, 0, counts[1] + counts[9] > 0 ? 4 : 1));
    syzygy_init(MEMORY_DIRECTORY);
    TableEntry* const entry = table_slot(material_key_of_counts(counts, false)).entry;
    if (entry == nullptr || !syzygy_map_table(*entry, c.signature, KIND_WDL))
        return nullptr;
    entry->ready[KIND_WDL] = 1;
    return entry;
}

// The file position of a board and its index there.
std::pair<int, std::uint64_t> place_of(const ProbeBoard& board, TableEntry& entry) {
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

// The same number for a board and all its reflections.
std::uint64_t canonical(const ProbeBoard& board) {
    std::uint64_t least = packed(board);
    for (unsigned how = 1; how < 8; ++how)
        least = std::min(least, packed(image(board, how)));
    return least;
}

// False when two men share a square, or a pawn stands where none can.
bool possible(const ProbeBoard& board, std::size_t men) {
    return popcount(board.white | board.black) == static_cast<int>(men) &&
           (board.pawns & (rank_mask(0) | rank_mask(7))) == 0;
}

} // namespace

// Tables of up to 7 men are too long to go through: placements that differ in one man, or in the
// place of two, must differ in their numbers unless they are reflections of each other.
TEST(PositionIndex, TellsNeighboursApart) {
    const IndexCase cases[] = {
        {"KQvK", {0, 6, 5, 14}},
        {"KNNvK", {1, 6, 14, 2, 2}},
        {"KQQvKRR", {1, 6, 14, 5, 5, 12, 12}},
        {"KRBNvKQ", {2, 14, 4, 13, 2, 3, 6}},
        {"KBBBvKNN", {2, 6, 14, 3, 3, 3, 10, 10}},
        {"KPPvKP", {1, 0, 9, 1, 1, 6, 14}},
        {"KPPvKPP", {0, 3, 1, 1, 9, 9, 14, 6}},
        {"KPPPPPvK", {1, 1, 1, 1, 1, 1, 14, 6}},
        {"KRPPvKQP", {3, 1, 9, 1, 1, 6, 4, 14, 13}},
    };
    std::mt19937 random(9);
    for (const IndexCase& c : cases) {
        SCOPED_TRACE(c.signature);
        TableEntry* const entry = entry_of(c);
        ASSERT_NE(entry, nullptr);
        const std::vector<Man> men = signature_men(c.signature);
        std::vector<int> squares(men.size());
        const auto board_now = [&] {
            ProbeBoard board = empty_board(true);
            for (std::size_t i = 0; i < men.size(); ++i)
                put_man(board, men[i], squares[i]);
            return board;
        };
        for (int round = 0; round < 300; ++round) {
            do {
                for (int& square : squares)
                    square = static_cast<int>(random() % 64);
            } while (!possible(board_now(), men.size()));
            const ProbeBoard board = board_now();
            const auto place = place_of(board, *entry);
            if (place.second == NO_INDEX) // kings that touch
                continue;
            const std::uint64_t self = canonical(board);
            const std::vector<int> home = squares;
            for (std::size_t i = 0; i < men.size(); ++i) {
                for (std::size_t other = 0; other < 64 + i; ++other) {
                    squares[i] = static_cast<int>(other);
                    if (other >= 64)
                        std::swap(squares[i] = home[i], squares[other - 64]);
                    const ProbeBoard near = board_now();
                    if (possible(near, men.size()) && place_of(near, *entry) == place) {
                        EXPECT_EQ(canonical(near), self) << board_text(board);
                    }
                    squares = home;
                }
            }
        }
    }
    syzygy_init("");
}

TEST(PositionIndex, CountsOfPlacements) {
    syzygy_build_index_tables();
    EXPECT_EQ(binomial[0][63], 1U);
    EXPECT_EQ(binomial[6][5], 0U);
    EXPECT_EQ(binomial[6][63], 67945521U);
    constexpr std::uint64_t expected[6][4] = {
        {6, 6, 6, 6},
        {252, 180, 108, 36},
        {5201, 2645, 953, 125},
        {70315, 25375, 5491, 295},
        {700336, 178696, 23176, 496},
        {5479348, 984494, 76104, 610},
    };
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(pawn_factor[i / 4][i % 4], expected[i / 4][i % 4]) << i;
}

} // namespace brindlemoth
