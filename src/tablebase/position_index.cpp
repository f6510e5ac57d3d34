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

// XOR masks that mirror a square left to right and top to bottom, and the bits of a square that
// tell the right half and the upper half of the board.
constexpr int MIRROR_FILES = 7;
constexpr int MIRROR_RANKS = 0x38;
constexpr int RIGHT_HALF = 4;
constexpr int UPPER_HALF = 0x20;
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
constexpr std::array<int, TRIANGLE_CELLS> TRIANGLE_SQUARES = {B1, C1, D1, C2, D2,
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

// The cell of the square's mirror image in the triangle.
constexpr auto triangle_cell = by_square([](int file, int rank) {
    const int near = fold(file);
    const int far = fold(rank);
    const int image = make_square(std::max(near, far), std::min(near, far));
    int cell = 0;
    while (TRIANGLE_SQUARES[static_cast<std::size_t>(cell)] != image)
        ++cell;
    return cell;
});

// The number of a square among the 28 squares below the diagonal, in ascending order. A square
// above the diagonal has the number of its reflection. The squares of the diagonal have 28 to 35.
constexpr auto lower_index = by_square([](int file, int rank) {
    if (file == rank)
        return 28 + rank;
    const int low = std::min(file, rank);
    const int high = std::max(file, rank);
    // The `low` ranks beneath hold 7, 6, 5 ... squares below the diagonal.
    return low * (15 - low) / 2 + high - low - 1;
});

constexpr auto diagonal_index = by_square([](int, int rank) { return rank; });

// The pawn squares are numbered from e7 (0) to a2 (47). The leading pawn has the highest number.
constexpr auto pawn_order = by_square([](int file, int rank) {
    if (rank == 0 || rank == 7)
        return 0;
    return file < 4 ? 47 - 12 * file - 2 * (rank - 1) : 46 - 12 * (7 - file) - 2 * (rank - 1);
});

// The slot of the leading pawn: a2 to a7 are 0 to 5, b2 to b7 are 6 to 11, and so on. Files e to h
// are folded onto files d to a.
constexpr auto pawn_slot = by_square(
    [](int file, int rank) { return rank == 0 || rank == 7 ? 0 : 6 * fold(file) + rank - 1; });

// The number of a pair of men that do not touch, by the cell of the first and the square of the
// second; -1 for a pair that touches. Three ranges of numbers follow each other: the first man
// below the diagonal, only the second man below it, both men on it. With the first man on the
// diagonal and the second above it the entry is -1, because the pair is a reflection of another.
constexpr auto two_king_index = [] {
    std::array<std::array<std::int16_t, 64>, TRIANGLE_CELLS> table{};
    std::int16_t next = 0;
    const auto number_pairs = [&](int first_cell, int last_cell, auto wanted) {
        for (int cell = first_cell; cell <= last_cell; ++cell) {
            const int king = TRIANGLE_SQUARES[static_cast<std::size_t>(cell)];
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
    number_pairs(0, FIRST_DIAGONAL_CELL - 1, [](int) { return true; });
    number_pairs(FIRST_DIAGONAL_CELL, TRIANGLE_CELLS - 1, [](int side) { return side < 0; });
    number_pairs(FIRST_DIAGONAL_CELL, TRIANGLE_CELLS - 1, [](int side) { return side == 0; });
    return table;
}();

static_assert(two_king_index[0][D1] == 0 && two_king_index[5][H8] == 338);
static_assert(two_king_index[6][C1] == 339 && two_king_index[6][C3] == 441);
static_assert(two_king_index[9][H8] == 461);

// Looks up a square without a sign conversion at every call.
template <typename Table> int at(const Table& table, int square) {
    return table[static_cast<std::size_t>(square)];
}

void mirror_squares(int squares[MAX_TABLE_MEN], int men, int mask) {
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

// Counts those of the first `count` squares that are below `square`.
int squares_below(const int squares[MAX_TABLE_MEN], int count, int square) {
    int below = 0;
    for (int i = 0; i < count; ++i)
        below += squares[i] < square ? 1 : 0;
    return below;
}

// Numbers a set of equal men, in places `begin` to `end` - 1, by the combinatorial number system.
// The set is a choice among the squares from `first_square` on that are not occupied by the men in
// earlier places. Sorts the men.
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

// Mirrors all men of a pawnless position into the triangle. Requires the first man on files a to d.
// Afterwards the first man is on ranks 1 to 4, and the first of the leading men that is not on the
// diagonal a1-h8 is below it.
void fold_into_triangle(int squares[MAX_TABLE_MEN], int men, int leading_men) {
    if ((squares[0] & UPPER_HALF) != 0)
        mirror_squares(squares, men, MIRROR_RANKS);
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

// The number of choices for one man in each case of three_men_index().
constexpr int SECOND_MAN_SQUARES = 63;     // any square but the first man's
constexpr int THIRD_MAN_SQUARES = 62;      // any square but those of the other two
constexpr int BELOW_DIAGONAL = 28;         // squares below the diagonal a1-h8
constexpr int FOLDED_DIAGONAL = 4;         // squares of the diagonal on ranks 1 to 4
constexpr int SECOND_DIAGONAL_SQUARES = 7; // squares of the diagonal but the first man's
constexpr int THIRD_DIAGONAL_SQUARES = 6;  // squares of the diagonal but those of the other two

// The first index of each case of three_men_index().
constexpr int SECOND_OFF_DIAGONAL =
    FIRST_DIAGONAL_CELL * SECOND_MAN_SQUARES * THIRD_MAN_SQUARES; // 23436
constexpr int THIRD_OFF_DIAGONAL =
    SECOND_OFF_DIAGONAL + FOLDED_DIAGONAL * BELOW_DIAGONAL * THIRD_MAN_SQUARES; // 30380
constexpr int NONE_OFF_DIAGONAL =
    THIRD_OFF_DIAGONAL + FOLDED_DIAGONAL * SECOND_DIAGONAL_SQUARES * BELOW_DIAGONAL; // 31164
static_assert(NONE_OFF_DIAGONAL +
                  FOLDED_DIAGONAL * SECOND_DIAGONAL_SQUARES * THIRD_DIAGONAL_SQUARES ==
              THREE_MEN_PLACEMENTS);

// Numbers three men of different kinds. The first is in the triangle. The cases differ in which man
// is the first that is not on the diagonal; that man is below the diagonal. Each case is a mixed
// radix number: the digits are the numbers of the men among the squares that are still possible.
int three_men_index(const int squares[MAX_TABLE_MEN]) {
    const int p0 = squares[0];
    const int p1 = squares[1];
    const int p2 = squares[2];
    const int below_p1 = p0 < p1 ? 1 : 0; // men that occupy a square below that of the next man
    const int below_p2 = (p0 < p2 ? 1 : 0) + (p1 < p2 ? 1 : 0);
    if (at(off_diagonal, p0) != 0)
        return (at(triangle_cell, p0) * SECOND_MAN_SQUARES + p1 - below_p1) * THIRD_MAN_SQUARES +
               p2 - below_p2;
    const int first = at(diagonal_index, p0);
    if (at(off_diagonal, p1) != 0)
        return SECOND_OFF_DIAGONAL +
               (first * BELOW_DIAGONAL + at(lower_index, p1)) * THIRD_MAN_SQUARES + p2 - below_p2;
    const int first_two = first * SECOND_DIAGONAL_SQUARES + at(diagonal_index, p1) - below_p1;
    if (at(off_diagonal, p2) != 0)
        return THIRD_OFF_DIAGONAL + first_two * BELOW_DIAGONAL + at(lower_index, p2);
    return NONE_OFF_DIAGONAL + first_two * THIRD_DIAGONAL_SQUARES + at(diagonal_index, p2) -
           below_p2;
}

// Numbers the pawns of the leading colour within their file position. Sorts all but the first.
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
        const bool first_colour = code < SECOND_SIDE;
        Bitboard men = board_men(board, first_colour != flip ? 1 : 0, code & PIECE_TYPE_MASK);
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
    if ((squares[0] & RIGHT_HALF) != 0)
        mirror_squares(squares, men, MIRROR_FILES);

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
