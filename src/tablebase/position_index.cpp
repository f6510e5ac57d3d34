#include "tablebase/position_index.h"

#include "board/bitboard.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

namespace brindlemoth {

std::uint64_t binomial[7][64];
std::uint64_t pawn_index[6][24];
std::uint64_t pawn_factor[6][4];

namespace {

constexpr int MIRROR_FILES = 7;
constexpr int MIRROR_RANKS = 0x38;
constexpr int TRIANGLE_CELLS = 10;
constexpr int FIRST_DIAGONAL_CELL = 6; // cells 0 to 5 lie off the diagonal a1-h8

template <typename Rule> constexpr auto by_square(Rule rule) {
    std::array<std::int8_t, 64> table{};
    for (int square = 0; square < 64; ++square)
        table[static_cast<std::size_t>(square)] =
            static_cast<std::int8_t>(rule(file_of(square), rank_of(square)));
    return table;
}

// The squares of the triangle a1-d1-d4, in the order of their cells.
constexpr std::array<int, TRIANGLE_CELLS> triangle_squares = {B1, C1, D1, C2, D2,
                                                              D3, A1, B2, C3, D4};

constexpr int fold(int coordinate) {
    return std::min(coordinate, 7 - coordinate);
}

// The square reflected in the diagonal a1-h8.
constexpr auto diagonal_flip = by_square([](int file, int rank) { return 8 * file + rank; });

// 0 on the diagonal, 1 above it, -1 below it.
constexpr auto off_diagonal = by_square([](int file, int rank) {
    return rank > file ? 1 : rank < file ? -1 : 0;
});

// The cell of a square's image in the triangle.
constexpr auto triangle_cell = by_square([](int file, int rank) {
    const int near = fold(file);
    const int far = fold(rank);
    const int image = make_square(std::max(near, far), std::min(near, far));
    int cell = 0;
    while (triangle_squares[static_cast<std::size_t>(cell)] != image)
        ++cell;
    return cell;
});

// The place among the 28 squares below the diagonal, in ascending order; above it that of the
// reflection. The diagonal itself follows from 28 on.
constexpr auto lower_index = by_square([](int file, int rank) {
    if (file == rank)
        return 28 + rank;
    const int low = std::min(file, rank);
    const int high = std::max(file, rank);
    // The `low` ranks beneath hold 7, 6, 5 ... squares below the diagonal.
    return low * (15 - low) / 2 + high - low - 1;
});

constexpr auto diagonal_index = by_square([](int, int rank) { return rank; });

// Pawn squares from e7 (0) to a2 (47): the leading pawn has the highest number.
constexpr auto pawn_order = by_square([](int file, int rank) {
    if (rank == 0 || rank == 7)
        return 0;
    return file < 4 ? 47 - 12 * file - 2 * (rank - 1) : 46 - 12 * (7 - file) - 2 * (rank - 1);
});

// Slots of the leading pawn: up the a-file, up the b-file, and so on, folded.
constexpr auto pawn_slot = by_square(
    [](int file, int rank) { return rank == 0 || rank == 7 ? 0 : 6 * fold(file) + rank - 1; });

// By the cell of one man and the square of another that it does not touch: three sweeps number
// the pairs, so that reflection in the diagonal counts no pair twice. -1 elsewhere.
constexpr auto two_king_index = [] {
    std::array<std::array<std::int16_t, 64>, TRIANGLE_CELLS> table{};
    std::int16_t next = 0;
    const auto sweep = [&](int first_cell, int last_cell, auto wanted) {
        for (int cell = first_cell; cell <= last_cell; ++cell) {
            const int king = triangle_squares[static_cast<std::size_t>(cell)];
            for (int square = 0; square < 64; ++square) {
                const int file_distance = file_of(king) - file_of(square);
                const int rank_distance = rank_of(king) - rank_of(square);
                const bool apart = file_distance < -1 || file_distance > 1 || rank_distance < -1 ||
                                   rank_distance > 1;
                if (apart && wanted(off_diagonal[static_cast<std::size_t>(square)]))
                    table[static_cast<std::size_t>(cell)][static_cast<std::size_t>(square)] =
                        next++;
            }
        }
    };
    for (auto& row : table)
        row.fill(-1);
    sweep(0, FIRST_DIAGONAL_CELL - 1, [](int) { return true; });
    sweep(FIRST_DIAGONAL_CELL, TRIANGLE_CELLS - 1, [](int side) { return side < 0; });
    sweep(FIRST_DIAGONAL_CELL, TRIANGLE_CELLS - 1, [](int side) { return side == 0; });
    return table;
}();

static_assert(two_king_index[0][D1] == 0 && two_king_index[5][H8] == 338);
static_assert(two_king_index[6][C1] == 339 && two_king_index[6][C3] == 441);
static_assert(two_king_index[9][H8] == 461);

// Lookups without a sign conversion at every use.
template <typename Table> int at(const Table& table, int square) {
    return table[static_cast<std::size_t>(square)];
}

void mirror_all(int squares[MAX_TABLE_MEN], int men, int mask) {
    for (int i = 0; i < men; ++i)
        squares[i] ^= mask;
}

template <typename Before> void exchange_sort(int* first, const int* last, Before before) {
    for (; first != last; ++first) {
        for (int* other = first + 1; other != last; ++other)
            if (before(*other, *first))
                std::swap(*first, *other);
    }
}
void sort_rising(int* first, const int* last) {
    exchange_sort(first, last, [](int a, int b) { return a < b; });
}

// How many of the first `count` squares lie below the given one.
int squares_below(const int squares[MAX_TABLE_MEN], int count, int square) {
    int below = 0;
    for (int i = 0; i < count; ++i)
        below += squares[i] < square ? 1 : 0;
    return below;
}

// The number of a set of like men in places `begin` to `end` - 1 among the squares from
// `first_square` on that the men before them leave free. Sorts the men.
std::uint64_t group_index(int squares[MAX_TABLE_MEN], int begin, int end, int first_square) {
    sort_rising(squares + begin, squares + end);
    std::uint64_t sum = 0;
    for (int i = begin; i < end; ++i) {
        const int free_square =
            squares[i] - squares_below(squares, begin, squares[i]) - first_square;
        sum += binomial[i - begin + 1][free_square];
    }
    return sum;
}

// Folds the men of a pawnless position so that the first of them stands in the triangle, and the
// first one off the diagonal among the leading men below it.
void fold_into_triangle(int squares[MAX_TABLE_MEN], int men, int leading_men) {
    if ((squares[0] & 0x20) != 0)
        mirror_all(squares, men, MIRROR_RANKS);
    for (int i = 0; i < leading_men; ++i) {
        const int side = at(off_diagonal, squares[i]);
        if (side == 0)
            continue;
        if (side > 0)
            for (int j = 0; j < men; ++j)
                squares[j] = at(diagonal_flip, squares[j]);
        return;
    }
}

// The number of three men of different kinds, 0 to 31331: four ranges, by how many of them stand
// on the diagonal before the first that does not.
int three_men_index(const int squares[MAX_TABLE_MEN]) {
    const int p0 = squares[0];
    const int p1 = squares[1];
    const int p2 = squares[2];
    const int s1 = p1 > p0 ? 1 : 0;
    const int s2 = (p2 > p0 ? 1 : 0) + (p2 > p1 ? 1 : 0);
    if (at(off_diagonal, p0) != 0)
        return (at(triangle_cell, p0) * 63 + p1 - s1) * 62 + p2 - s2;
    if (at(off_diagonal, p1) != 0)
        return (378 + at(diagonal_index, p0) * 28 + at(lower_index, p1)) * 62 + p2 - s2;
    if (at(off_diagonal, p2) != 0)
        return (1085 + at(diagonal_index, p0) * 7 + at(diagonal_index, p1) - s1) * 28 +
               at(lower_index, p2);
    return (5194 + at(diagonal_index, p0) * 7 + at(diagonal_index, p1) - s1) * 6 +
           at(diagonal_index, p2) - s2;
}

// The number of the pawns of the leading colour on their file position. Sorts all but the first.
std::uint64_t lead_pawns_index(int squares[MAX_TABLE_MEN], int lead) {
    exchange_sort(squares + 1, squares + lead,
                  [](int a, int b) { return at(pawn_order, a) > at(pawn_order, b); });
    std::uint64_t index = pawn_index[lead - 1][at(pawn_slot, squares[0])];
    for (int i = 1; i < lead; ++i)
        index += binomial[lead - i][at(pawn_order, squares[i])];
    return index;
}

} // namespace

void syzygy_build_index_tables() {
    for (int k = 0; k < 7; ++k) {
        for (int n = 0; n < 64; ++n) {
            const bool edge = k == 0 || n == 0;
            binomial[k][n] = edge ? (k == 0 ? 1 : 0) : binomial[k - 1][n - 1] + binomial[k][n - 1];
        }
    }
    for (int i = 0; i < 6; ++i) {
        for (int file = 0; file < PAWN_FILE_POSITIONS; ++file) {
            std::uint64_t placements = 0;
            for (int rank = 1; rank < 7; ++rank) {
                pawn_index[i][6 * file + rank - 1] = placements;
                placements += binomial[i][at(pawn_order, make_square(file, rank))];
            }
            pawn_factor[i][file] = placements;
        }
    }
}

int syzygy_collect_squares(const ProbeBoard& board, const SideEncoding& encoding, int start,
                           int places, bool flip, int mask, int squares[MAX_TABLE_MEN]) {
    int place = start;
    while (place < places) {
        const int code = encoding.piece_order[place];
        const bool first_colour = code < 8;
        Bitboard men = board_men(board, first_colour != flip ? 1 : 0, code & 7);
        assert(men != 0 && place + popcount(men) <= places);
        do
            squares[place++] = pop_lowest(men) ^ mask;
        while (men != 0);
    }
    return place;
}

int syzygy_pick_lead_pawn(int squares[MAX_TABLE_MEN], int lead_pawns) {
    for (int i = 1; i < lead_pawns; ++i)
        if (at(pawn_slot, squares[0]) > at(pawn_slot, squares[i]))
            std::swap(squares[0], squares[i]);
    return fold(file_of(squares[0]));
}

std::uint64_t syzygy_position_index(int squares[MAX_TABLE_MEN], const SideEncoding& encoding,
                                    const TableEntry& entry) {
    const int men = entry.men;
    if ((squares[0] & 4) != 0)
        mirror_all(squares, men, MIRROR_FILES);

    std::uint64_t index;
    int place;
    if (entry.has_pawns != 0) {
        const int lead = entry.lead_pawns;
        const int pawns = lead + entry.other_pawns;
        index = lead_pawns_index(squares, lead) * encoding.multiplier[0];
        if (pawns > lead)
            index += group_index(squares, lead, pawns, A2) * encoding.multiplier[lead];
        place = pawns;
    } else {
        const int leading_men = entry.two_king_scheme != 0 ? 2 : 3;
        fold_into_triangle(squares, men, leading_men);
        if (leading_men == 2) {
            const auto cell = static_cast<std::size_t>(at(triangle_cell, squares[0]));
            const int pair = at(two_king_index[cell], squares[1]);
            if (pair < 0)
                return NO_INDEX;
            index = static_cast<std::uint64_t>(pair) * encoding.multiplier[0];
        } else {
            index = static_cast<std::uint64_t>(three_men_index(squares)) * encoding.multiplier[0];
        }
        place = leading_men;
    }

    while (place < men) {
        const int end = place + encoding.group_size[place];
        index += group_index(squares, place, end, A1) * encoding.multiplier[place];
        place = end;
    }
    return index;
}

} // namespace brindlemoth
