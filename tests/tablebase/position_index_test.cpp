// The numbering of positions: dense, and blind to exactly the symmetries of the board.

#include "board/bitboard.h"
#include "support/support.h"
#include "tablebase/position_index.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_file.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {

namespace {

// A signature with its men in an order of their own and the turns of the first group and of the
// other pawns; a file without content brings it into force.
struct IndexCase {
    const char* signature;
    std::vector<int> order; // piece codes
    int turn;
    int other_turn;
    std::uint64_t positions; // of each file position
};

std::string constant_table(const IndexCase& c, bool with_pawns, bool two_pawn_groups) {
    std::string file = "\x71\xE8\x23\x5D";
    file += '\0';
    for (int t = 0; t < (with_pawns ? 4 : 1); ++t) {
        file += static_cast<char>(c.turn);
        if (two_pawn_groups)
            file += static_cast<char>(c.other_turn);
        for (const int code : c.order)
            file += static_cast<char>(code);
    }
    file.resize(file.size() + file.size() % 2);
    for (int t = 0; t < (with_pawns ? 4 : 1); ++t)
        file += std::string("\x80\x02", 2);
    file.resize((file.size() + 63) / 64 * 64 + 16);
    return file;
}

// The entry of a mapped table of that shape; null on failure.
TableEntry* entry_of(const IndexCase& c, const TemporaryDirectory& directory) {
    int counts[16];
    count_signature_men(c.signature, counts);
    const bool pawns = counts[1] + counts[9] > 0;
    write_file(directory.file(c.signature + std::string(".rtbw")),
               constant_table(c, pawns, counts[1] > 0 && counts[9] > 0));
    syzygy_init(directory.path.c_str());
    TableEntry* const entry = table_slot(material_key_of_counts(counts, false)).entry;
    if (entry == nullptr || !syzygy_map_table(*entry, c.signature, KIND_WDL))
        return nullptr;
    entry->ready[KIND_WDL] = 1;
    return entry;
}

// The index of a board and its file position.
struct Place {
    int file_position;
    std::uint64_t index;
    bool operator==(const Place&) const = default;
};

Place place_of(const ProbeBoard& board, TableEntry& entry) {
    int squares[MAX_TABLE_MEN];
    Place place{0, 0};
    const SideEncoding* encoding = syzygy_first_encoding(entry, KIND_WDL);
    int start = 0;
    if (entry.has_pawns != 0) {
        start = syzygy_collect_squares(board, *encoding, 0, entry.lead_pawns, false, 0, squares);
        place.file_position = syzygy_pick_lead_pawn(squares, entry.lead_pawns);
        encoding += place.file_position;
    }
    EXPECT_EQ(syzygy_collect_squares(board, *encoding, start, entry.men, false, 0, squares),
              entry.men);
    place.index = syzygy_position_index(squares, *encoding, entry);
    return place;
}

using Squares = std::vector<int>; // of the men of a signature in its own order

int reflected(int square, int symmetry) {
    if ((symmetry & 1) != 0)
        square ^= 7;
    if ((symmetry & 2) != 0)
        square ^= 56;
    return (symmetry & 4) != 0 ? make_square(rank_of(square), file_of(square)) : square;
}

// The least of all like placements: reflections of the board, and exchanges of like men.
Squares canonical(const Squares& squares, const std::vector<Man>& men) {
    bool pawns = false;
    for (const Man& man : men)
        pawns = pawns || man.type == PROBE_PAWN;
    Squares best;
    for (int symmetry = 0; symmetry < (pawns ? 2 : 8); ++symmetry) {
        Squares image = squares;
        for (int& square : image)
            square = reflected(square, symmetry);
        for (std::size_t i = 0; i < men.size();) {
            std::size_t end = i;
            while (end < men.size() && men[end].type == men[i].type &&
                   men[end].white == men[i].white)
                ++end;
            std::sort(image.begin() + static_cast<std::ptrdiff_t>(i),
                      image.begin() + static_cast<std::ptrdiff_t>(end));
            i = end;
        }
        if (best.empty() || image < best)
            best = image;
    }
    return best;
}

ProbeBoard board_of(const Squares& squares, const std::vector<Man>& men) {
    ProbeBoard board = empty_board(true);
    for (std::size_t i = 0; i < men.size(); ++i)
        put_man(board, men[i], squares[i]);
    return board;
}

bool can_stand(const Man& man, int square) {
    return man.type != PROBE_PAWN || (rank_of(square) != 0 && rank_of(square) != 7);
}

// All placements of men on squares of their own, like men in rising order.
void for_all_placements(const std::vector<Man>& men, Squares& squares, Bitboard occupied,
                        const std::function<void(const Squares&)>& visit) {
    const std::size_t next = squares.size();
    if (next == men.size()) {
        visit(squares);
        return;
    }
    const bool twin =
        next > 0 && men[next - 1].type == men[next].type && men[next - 1].white == men[next].white;
    for (int square = twin ? squares.back() + 1 : 0; square < 64; ++square) {
        if ((occupied & square_bit(square)) != 0 || !can_stand(men[next], square))
            continue;
        squares.push_back(square);
        for_all_placements(men, squares, occupied | square_bit(square), visit);
        squares.pop_back();
    }
}

bool in_triangle(int square) {
    return file_of(square) < 4 && rank_of(square) <= file_of(square);
}

std::uint32_t packed(const Squares& squares) {
    std::uint32_t number = 0;
    for (const int square : squares)
        number = number * 64 + static_cast<std::uint32_t>(square);
    return number;
}

std::string index_case_name(const testing::TestParamInfo<IndexCase>& info) {
    return info.param.signature;
}

} // namespace

using DenseIndex = testing::TestWithParam<IndexCase>;

// Every number below the table's length belongs to one set of like placements and to no other.
TEST_P(DenseIndex, NumbersEachPositionOnce) {
    const TemporaryDirectory directory;
    const IndexCase& c = GetParam();
    TableEntry* const entry = entry_of(c, directory);
    ASSERT_NE(entry, nullptr);
    const std::vector<Man> men = signature_men(c.signature);
    const auto tables = static_cast<std::size_t>(file_positions(*entry));
    constexpr std::uint32_t NOBODY = 0xFFFFFFFF;
    std::vector<std::vector<std::uint32_t>> owners(tables);
    for (std::size_t t = 0; t < tables; ++t) {
        const std::uint64_t lead_factor =
            entry->has_pawns != 0 ? pawn_factor[entry->lead_pawns - 1][t] : 1;
        owners[t].assign(c.positions * lead_factor, NOBODY);
    }
    int outside = 0;
    int shared = 0;
    Squares squares;
    for_all_placements(men, squares, 0, [&](const Squares& placement) {
        // Without pawns the first man of the signature can be reflected into the triangle.
        if (entry->has_pawns == 0 && !in_triangle(placement[0]))
            return;
        const Place place = place_of(board_of(placement, men), *entry);
        auto& owners_here = owners[static_cast<std::size_t>(place.file_position)];
        if (place.index == NO_INDEX) // kings that touch
            return;
        if (place.index >= owners_here.size()) {
            ++outside;
            return;
        }
        std::uint32_t& owner = owners_here[place.index];
        const std::uint32_t self = packed(canonical(placement, men));
        shared += owner != NOBODY && owner != self ? 1 : 0;
        owner = self;
    });
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(shared, 0);
    for (const auto& owners_here : owners)
        EXPECT_EQ(std::count(owners_here.begin(), owners_here.end(), NOBODY), 0);
}

constexpr std::uint64_t C62_2 = 62 * 61 / 2;
INSTANTIATE_TEST_SUITE_P(Tables, DenseIndex,
                         testing::Values(IndexCase{"KQvK", {6, 5, 14}, 0, 0, 31332},
                                         IndexCase{"KRvK", {4, 14, 6}, 0, 0, 31332},
                                         IndexCase{"KPvK", {1, 14, 6}, 1, 0, 63 * 62},
                                         IndexCase{"KNNvK", {6, 14, 2, 2}, 1, 0, 462 * C62_2},
                                         IndexCase{"KBNvK", {3, 14, 6, 2}, 1, 0, 31332 * 61},
                                         IndexCase{"KPvKP", {9, 1, 14, 6}, 1, 2, 47 * 62 * 61},
                                         IndexCase{"KPPvK", {1, 1, 6, 14}, 0, 0, 62 * 61}),
                         index_case_name);

// Tables of up to 7 men are too long to go through: placements that differ in one man, or in the
// place of two, must differ in their numbers unless they are reflections of each other.
TEST(PositionIndex, TellsNeighboursApart) {
    const IndexCase cases[] = {
        {"KQQvKRR", {6, 14, 5, 5, 12, 12}, 1, 0, 0},
        {"KRBNvKQ", {14, 4, 13, 2, 3, 6}, 2, 0, 0},
        {"KBBBvKNN", {6, 14, 3, 3, 3, 10, 10}, 2, 0, 0},
        {"KPPvKP", {9, 1, 1, 6, 14}, 1, 0, 0},
        {"KPPvKPP", {1, 1, 9, 9, 14, 6}, 0, 3, 0},
        {"KPPPPPvK", {1, 1, 1, 1, 1, 14, 6}, 1, 0, 0},
        {"KRPPvKQP", {9, 1, 1, 6, 4, 14, 13}, 3, 1, 0},
    };
    std::mt19937 random(9);
    for (const IndexCase& c : cases) {
        SCOPED_TRACE(c.signature);
        const TemporaryDirectory directory;
        TableEntry* const entry = entry_of(c, directory);
        ASSERT_NE(entry, nullptr);
        const std::vector<Man> men = signature_men(c.signature);
        for (int round = 0; round < 300; ++round) {
            Squares placement;
            Bitboard occupied = 0;
            while (placement.size() < men.size()) {
                const int square = static_cast<int>(random() % 64);
                if ((occupied & square_bit(square)) != 0 ||
                    !can_stand(men[placement.size()], square))
                    continue;
                occupied |= square_bit(square);
                placement.push_back(square);
            }
            const Place place = place_of(board_of(placement, men), *entry);
            if (place.index == NO_INDEX)
                continue;
            const Squares self = canonical(placement, men);
            const auto expect_apart = [&](const Squares& other) {
                if (place_of(board_of(other, men), *entry) == place) {
                    EXPECT_EQ(canonical(other, men), self);
                }
            };
            for (std::size_t i = 0; i < men.size(); ++i) {
                for (int square = 0; square < 64; ++square) {
                    if ((occupied & square_bit(square)) != 0 || !can_stand(men[i], square))
                        continue;
                    Squares other = placement;
                    other[i] = square;
                    expect_apart(other);
                }
                for (std::size_t j = 0; j < i; ++j) {
                    Squares other = placement;
                    std::swap(other[i], other[j]);
                    if (can_stand(men[i], other[i]) && can_stand(men[j], other[j]))
                        expect_apart(other);
                }
            }
        }
    }
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
    for (int pawns = 0; pawns < 6; ++pawns) {
        for (int file = 0; file < 4; ++file)
            EXPECT_EQ(pawn_factor[pawns][file], expected[pawns][file]) << pawns << file;
    }
}

} // namespace brindlemoth
