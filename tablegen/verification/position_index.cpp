// The index of a position in a table file, forward from the squares: the writer goes the other way.
#include "verification/table_reader.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace brindlemoth::tablegen {

using MenSquares = std::array<std::size_t, 8>;

static std::uint64_t pawn_order(std::size_t square) {
    const std::size_t file = square % 8;
    const std::size_t rank = square / 8;
    return file < 4 ? 47 - 12 * file - 2 * (rank - 1) : 46 - 12 * (7 - file) - 2 * (rank - 1);
}

static std::size_t pawn_slot(std::size_t square) {
    return 6 * std::min(square % 8, 7 - square % 8) + square / 8 - 1;
}

static std::size_t diagonal_flip(std::size_t square) {
    return square % 8 * 8 + square / 8;
}

// Cell of a square of the triangle a1-d1-d4.
static std::uint64_t triangle_cell(std::size_t square) {
    constexpr std::array<std::size_t, 10> cells = {1, 2, 3, 10, 11, 19, 0, 9, 18, 27};
    return static_cast<std::uint64_t>(std::find(cells.begin(), cells.end(), square) -
                                      cells.begin());
}

// Place of a square below the diagonal among all such: the rows get shorter by one.
static std::uint64_t lower_index(std::size_t square) {
    const std::size_t rank = square / 8;
    return rank * 7 - rank * (rank - 1) / 2 + (square % 8 - rank - 1);
}

static bool off_diagonal(std::size_t square) {
    return square % 8 != square / 8;
}
static bool above_diagonal(std::size_t square) {
    return square / 8 > square % 8;
}

static std::uint64_t two_kings_index(std::size_t first, std::size_t second) {
    // Count the placements that come before this one.
    auto touching = [](std::size_t a, std::size_t b) {
        const auto files = static_cast<int>(a % 8) - static_cast<int>(b % 8);
        const auto ranks = static_cast<int>(a / 8) - static_cast<int>(b / 8);
        return std::abs(files) <= 1 && std::abs(ranks) <= 1;
    };
    auto sweep_of = [](std::size_t a, std::size_t b) {
        return off_diagonal(a) ? 0 : off_diagonal(b) ? (above_diagonal(b) ? 3 : 1) : 2;
    };
    constexpr std::array<std::size_t, 10> cells = {1, 2, 3, 10, 11, 19, 0, 9, 18, 27};
    std::uint64_t number = 0;
    for (int sweep = 0; sweep < 3; ++sweep) {
        for (const std::size_t a : cells) {
            for (std::size_t b = 0; b < 64; ++b) {
                if (sweep_of(a, b) != sweep || touching(a, b))
                    continue;
                if (a == first && b == second)
                    return number;
                ++number;
            }
        }
    }
    return 0; // touching kings: no position
}

static std::uint64_t two_kings_number(std::size_t first, std::size_t second) {
    static const std::vector<std::uint64_t> numbers = [] {
        std::vector<std::uint64_t> made(64 * 64);
        for (std::size_t i = 0; i < made.size(); ++i)
            made[i] = two_kings_index(i / 64, i % 64);
        return made;
    }();
    return numbers[first * 64 + second];
}

static std::uint64_t three_men_index(std::size_t p0, std::size_t p1, std::size_t p2) {
    const std::size_t s1 = p1 > p0 ? 1 : 0;
    const std::size_t s2 = (p2 > p0 ? 1U : 0U) + (p2 > p1 ? 1U : 0U);
    if (off_diagonal(p0))
        return (triangle_cell(p0) * 63 + p1 - s1) * 62 + p2 - s2;
    const std::size_t d0 = p0 / 8;
    if (off_diagonal(p1))
        return (378 + d0 * 28 + lower_index(p1)) * 62 + p2 - s2;
    const std::size_t d1 = p1 / 8;
    if (off_diagonal(p2))
        return (1085 + d0 * 7 + d1 - s1) * 28 + lower_index(p2);
    return (5194 + d0 * 7 + d1 - s1) * 6 + p2 / 8 - s2;
}

// Sorts a stretch of the men; there are never more than a handful.
template <typename Before>
static void sort_squares(MenSquares& square, std::size_t first, std::size_t count, Before before) {
    for (std::size_t i = first + 1; i < first + count; ++i)
        for (std::size_t k = i; k > first && before(square[k], square[k - 1]); --k)
            std::swap(square[k], square[k - 1]);
}

// The first group of a pawnless stream. Turns the whole board so that it fits.
static std::uint64_t index_leading_men(MenSquares& square, std::size_t men, std::size_t leading) {
    if ((square[0] & 32) != 0)
        std::for_each(square.begin(), square.end(), [](std::size_t& s) { s ^= 56; });
    std::size_t first = 0;
    while (first < men && !off_diagonal(square[first]))
        ++first;
    if (first < leading && above_diagonal(square[first]))
        std::for_each(square.begin(), square.end(), [](std::size_t& s) { s = diagonal_flip(s); });
    return leading == 2 ? two_kings_number(square[0], square[1])
                        : three_men_index(square[0], square[1], square[2]);
}

static std::uint64_t index_leading_pawns(MenSquares& square, std::size_t pawns) {
    sort_squares(square, 1, pawns - 1,
                 [](std::size_t a, std::size_t b) { return pawn_order(a) > pawn_order(b); });
    const std::size_t file = square[0] % 8;
    std::uint64_t index = 0;
    for (std::size_t rank = 1; rank < square[0] / 8; ++rank)
        index += binomial(pawn_order(8 * rank + file), pawns - 1);
    for (std::size_t i = 1; i < pawns; ++i)
        index += binomial(pawn_order(square[i]), pawns - i);
    return index;
}

static std::uint64_t index_group(MenSquares& square, const ReaderGroup& group, std::size_t offset) {
    const auto first = square.begin() + static_cast<long>(group.first);
    sort_squares(square, group.first, group.size, std::less<>{});
    std::uint64_t index = 0;
    for (std::size_t i = 0; i < group.size; ++i) {
        const auto skips = static_cast<std::size_t>(std::count_if(
            square.begin(), first, [&](std::size_t earlier) { return earlier < first[i]; }));
        index += binomial(first[static_cast<long>(i)] - skips - offset, i + 1);
    }
    return index;
}

std::optional<StreamIndex> find_position(const TableReader& reader, const Layout& layout,
                                         const Placement& placement, Side side) {
    const bool symmetric = is_symmetric(reader.signature);
    const bool flip = symmetric && side == BLACK;
    const std::size_t stored_side = symmetric || side == WHITE ? 0 : 1;
    const std::size_t mask = flip && reader.pawns ? 56 : 0;

    // The squares of the men that a stream names from place `first` on.
    MenSquares square{};
    auto collect = [&](const ReaderStream& stream, std::size_t first, std::size_t last) {
        for (std::size_t place = first; place < last;) {
            const std::uint8_t code = stream.piece[place];
            const bool black = (code >= 8) != flip;
            const std::size_t begin = place;
            for (std::size_t slot = 0; slot < layout.men; ++slot)
                if (layout.kind[slot] == code % 8 && (layout.side[slot] == BLACK) == black)
                    square[place++] = placement[slot];
            sort_squares(square, begin, place - begin, std::less<>{});
            for (std::size_t man = begin; man < place; ++man)
                square[man] ^= mask;
        }
    };
    std::size_t file = 0;
    const std::size_t leading = reader.streams[0].groups[0].size;
    if (reader.pawns) {
        collect(reader.streams[0], 0, leading);
        for (std::size_t i = 1; i < leading; ++i)
            if (pawn_slot(square[0]) > pawn_slot(square[i]))
                std::swap(square[0], square[i]);
        file = std::min(square[0] % 8, 7 - square[0] % 8);
    }
    const ReaderStream& stream =
        reader.streams[file * reader.sides + (reader.sides == 2 ? stored_side : 0)];
    if (reader.dtz && !symmetric && (stream.flags & 1) != stored_side)
        return std::nullopt;
    collect(stream, reader.pawns ? leading : 0, layout.men);
    if ((square[0] & 4) != 0)
        std::for_each(square.begin(), square.end(), [](std::size_t& s) { s ^= 7; });
    std::uint64_t index = 0;
    for (std::size_t i = 0; i < stream.groups.size(); ++i) {
        const ReaderGroup& group = stream.groups[i];
        std::uint64_t number = 0;
        if (i == 0) {
            number = reader.pawns ? index_leading_pawns(square, leading)
                                  : index_leading_men(square, layout.men, leading);
        } else {
            const bool pawns = stream.piece[group.first] % 8 == PAWN;
            number = index_group(square, group, pawns ? 8 : 0);
        }
        index += number * group.multiplier;
    }
    return StreamIndex{&stream, index};
}

} // namespace brindlemoth::tablegen
