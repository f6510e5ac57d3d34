#include "numbering/numbering.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace brindlemoth::tablegen {

constexpr int SQUARES = 64;
constexpr int PAWN_SQUARES = 48;

static constexpr std::uint64_t choose(std::uint64_t n, std::uint64_t k) {
    std::uint64_t result = n >= k ? 1 : 0;
    for (std::uint64_t i = 1; i <= k && result != 0; ++i)
        result = result * (n - k + i) / i;
    return result;
}

// A pawn square's rank among all 48: from 47 for a2, mirror images side by side, down to e7.
static int pawn_rank_order(int square) {
    const int file = square % 8;
    const int steps = square / 8 - 1;
    const int outer = std::min(file, 7 - file);
    return 47 - 12 * outer - 2 * steps - (file > 3 ? 1 : 0);
}

namespace {

struct NumberingTables {
    std::array<std::array<std::uint64_t, 7>, 65> binomial{}; // [n][k]
    std::array<std::uint8_t, PAWN_SQUARES> pawn_square{};    // inverse of pawn_rank_order()
    std::vector<std::array<std::uint8_t, 3>> three_men;
    std::vector<std::array<std::uint8_t, 2>> two_kings;
};

} // namespace

static int rank_of(int square) {
    return square / 8;
}
static int file_of(int square) {
    return square % 8;
}
static bool on_diagonal(int square) {
    return rank_of(square) == file_of(square);
}
static bool below_diagonal(int square) {
    return rank_of(square) < file_of(square);
}

// The squares on which the first man of a pawnless table may stand: those of the triangle
// a1-d1-d4 below the diagonal, then those on it.
constexpr std::array<std::uint8_t, 10> TRIANGLE = {1, 2, 3, 10, 11, 19, 0, 9, 18, 27};

// Three different men: first those whose first man off the diagonal is the first of them, then
// the second, then the third, then all on the diagonal. Within each, the later men vary faster.
static std::vector<std::array<std::uint8_t, 3>> list_three_men() {
    std::vector<std::array<std::uint8_t, 3>> list;
    for (int row = 0; row < 4; ++row) {
        for (const std::uint8_t first : TRIANGLE) {
            for (std::uint8_t second = 0; second < SQUARES; ++second) {
                for (std::uint8_t third = 0; third < SQUARES; ++third) {
                    int first_off = 3;
                    bool below = true;
                    const std::array<std::uint8_t, 3> men = {first, second, third};
                    for (int i = 2; i >= 0; --i) {
                        if (!on_diagonal(men[static_cast<std::size_t>(i)])) {
                            first_off = i;
                            below = below_diagonal(men[static_cast<std::size_t>(i)]);
                        }
                    }
                    if (first_off == row && below && first != second && first != third &&
                        second != third)
                        list.push_back(men);
                }
            }
        }
    }
    return list;
}

// Two kings not in touch: the first off the diagonal; on it with the second below; both on it.
static std::vector<std::array<std::uint8_t, 2>> list_two_kings() {
    std::vector<std::array<std::uint8_t, 2>> list;
    for (int row = 0; row < 3; ++row) {
        for (const std::uint8_t first : TRIANGLE) {
            for (std::uint8_t second = 0; second < SQUARES; ++second) {
                const int files = file_of(first) - file_of(second);
                const int ranks = rank_of(first) - rank_of(second);
                const bool touching = std::max(std::abs(files), std::abs(ranks)) <= 1;
                const bool fits = !on_diagonal(first)   ? row == 0
                                  : on_diagonal(second) ? row == 2
                                                        : row == 1 && below_diagonal(second);
                if (fits && !touching)
                    list.push_back({first, second});
            }
        }
    }
    return list;
}

static const NumberingTables& tables() {
    static const NumberingTables made = [] {
        NumberingTables t;
        for (std::size_t n = 0; n < t.binomial.size(); ++n)
            for (std::size_t k = 0; k < t.binomial[n].size(); ++k)
                t.binomial[n][k] = choose(n, k);
        for (int square = 8; square < 56; ++square)
            t.pawn_square[static_cast<std::size_t>(pawn_rank_order(square))] =
                static_cast<std::uint8_t>(square);
        t.three_men = list_three_men();
        t.two_kings = list_two_kings();
        return t;
    }();
    return made;
}

bool kings_lead(const Signature& signature) {
    int single = 0;
    for (const auto& side : signature.count)
        single += static_cast<int>(std::count(side.begin(), side.end(), 1));
    return single == 2;
}

Side leading_colour(const Signature& signature) {
    const int white = signature.count[WHITE][PAWN];
    const int black = signature.count[BLACK][PAWN];
    return black > 0 && (white == 0 || black < white) ? BLACK : WHITE;
}

int file_positions(const Signature& signature) {
    return pawns_of(signature) == 0 ? 1 : 4;
}

static std::uint8_t piece_code(Side side, std::size_t kind) {
    return static_cast<std::uint8_t>(kind + (side == BLACK ? 8U : 0U));
}

// The number of groups of a stream whose men stand in this order.
static std::size_t count_groups(const Signature& signature, const StreamOrder& order) {
    return make_numbering(signature, 0, order).groups.size();
}

std::vector<StreamOrder> possible_orders(const Signature& signature) {
    // The men that lead, in each way that they can; the rest follow in groups of like men.
    std::vector<std::vector<std::uint8_t>> starts;
    std::vector<std::uint8_t> singles;
    for (const Side side : {WHITE, BLACK}) {
        for (std::size_t kind = PAWN; kind <= KING; ++kind)
            if (signature.count[side][kind] == 1)
                singles.push_back(piece_code(side, kind));
    }
    const bool pawns = pawns_of(signature) != 0;
    const std::uint8_t white_king = piece_code(WHITE, KING);
    const std::uint8_t black_king = piece_code(BLACK, KING);
    bool two_pawn_groups = false;
    if (pawns) {
        const Side lead = leading_colour(signature);
        const Side other = lead == WHITE ? BLACK : WHITE;
        std::vector<std::uint8_t> start(signature.count[lead][PAWN], piece_code(lead, PAWN));
        two_pawn_groups = signature.count[other][PAWN] != 0;
        start.insert(start.end(), signature.count[other][PAWN], piece_code(other, PAWN));
        starts.push_back(start);
    } else if (kings_lead(signature)) {
        starts = {{white_king, black_king}, {black_king, white_king}};
    } else {
        for (const std::uint8_t a : singles) {
            for (const std::uint8_t b : singles) {
                for (const std::uint8_t c : singles)
                    if (a != b && a != c && b != c)
                        starts.push_back({a, b, c});
            }
        }
    }
    std::vector<StreamOrder> result;
    for (const std::vector<std::uint8_t>& start : starts) {
        std::vector<std::uint8_t> rest;
        for (const Side side : {WHITE, BLACK}) {
            for (std::size_t kind = PAWN; kind <= KING; ++kind) {
                const std::uint8_t piece = piece_code(side, kind);
                if (signature.count[side][kind] != 0 &&
                    std::find(start.begin(), start.end(), piece) == start.end())
                    rest.push_back(piece);
            }
        }
        do {
            StreamOrder base;
            auto next = std::copy(start.begin(), start.end(), base.piece.begin());
            for (const std::uint8_t piece : rest)
                next = std::fill_n(next, signature.count[side_of(piece)][kind_of(piece)], piece);
            base.order2 = two_pawn_groups ? 1 : 15;
            const int groups = static_cast<int>(count_groups(signature, base));
            for (base.order = 0; base.order < groups; ++base.order) {
                for (int second = 0; second < (two_pawn_groups ? groups : 1); ++second) {
                    base.order2 = two_pawn_groups ? second : 15;
                    if (base.order2 != base.order)
                        result.push_back(base);
                }
            }
        } while (std::next_permutation(rest.begin(), rest.end()));
    }
    return result;
}

// How many placements the leading pawns have with the first on the file of that position.
static std::uint64_t leading_pawn_placements(std::size_t pawns, int file_position) {
    std::uint64_t sum = 0;
    for (int rank = 1; rank <= 6; ++rank) {
        const int order = pawn_rank_order(8 * rank + file_position);
        sum += choose(static_cast<std::uint64_t>(order), pawns - 1);
    }
    return sum;
}

Numbering make_numbering(const Signature& signature, int file_position, const StreamOrder& order) {
    Numbering made;
    made.men = static_cast<std::size_t>(men_of(signature));
    made.file_position = file_position;
    made.order = order;
    const bool pawns = pawns_of(signature) != 0;
    std::size_t next = 0;
    auto add = [&](GroupKind kind, std::size_t size, std::uint64_t placements) {
        made.groups.push_back({kind, next, size, placements, 0});
        next += size;
    };
    bool two_pawn_groups = false;
    if (pawns) {
        const Side lead = leading_colour(signature);
        const std::size_t leading = signature.count[lead][PAWN];
        const std::size_t others = signature.count[lead == WHITE ? BLACK : WHITE][PAWN];
        add(GroupKind::LEADING_PAWNS, leading, leading_pawn_placements(leading, file_position));
        two_pawn_groups = others != 0;
        if (two_pawn_groups)
            add(GroupKind::OTHER_PAWNS, others, choose(PAWN_SQUARES - leading, others));
    } else if (kings_lead(signature)) {
        add(GroupKind::TWO_KINGS, 2, tables().two_kings.size());
    } else {
        add(GroupKind::THREE_MEN, 3, tables().three_men.size());
    }
    const std::size_t fixed = made.groups.size();
    while (next < made.men) {
        const auto* first = order.piece.begin() + next;
        const auto* end = order.piece.begin() + made.men;
        const auto* last = std::find_if(first, end, [&](auto piece) { return piece != *first; });
        const auto size = static_cast<std::size_t>(last - first);
        add(GroupKind::MEN, size, choose(SQUARES - next, size));
    }
    // The multipliers, in the order of the turns.
    made.positions = 1;
    auto take = [&](Group& group) {
        group.multiplier = made.positions;
        made.positions *= group.placements;
    };
    std::size_t following = fixed;
    for (int turn = 0; turn < static_cast<int>(made.groups.size()); ++turn) {
        if (turn == order.order) {
            take(made.groups[0]);
        } else if (two_pawn_groups && turn == order.order2) {
            take(made.groups[1]);
        } else {
            assert(following < made.groups.size());
            take(made.groups[following++]);
        }
    }
    return made;
}

// The square that has this many free ones before it: those of the men placed earlier are skipped.
static std::uint8_t free_square(std::uint64_t number, const FileSquares& squares,
                                std::size_t earlier) {
    std::uint64_t taken = 0;
    for (std::size_t i = 0; i < earlier; ++i)
        taken |= std::uint64_t{1} << squares[i];
    for (; taken != 0; taken &= taken - 1)
        number += static_cast<std::uint64_t>(std::countr_zero(taken)) <= number ? 1 : 0;
    return static_cast<std::uint8_t>(number);
}

// The members of a set of `size` numbers, greatest first, from the set's place among all such.
template <typename Take>
static void for_combination(std::uint64_t place, std::size_t size, const Take& take) {
    for (std::size_t k = size; k >= 1; --k) {
        std::uint64_t number = k - 1;
        while (number + 1 < SQUARES && tables().binomial[number + 1][k] <= place)
            ++number;
        place -= tables().binomial[number][k];
        take(k - 1, number);
    }
}

FileSquares squares_at(const Numbering& numbering, std::uint64_t index) {
    FileSquares squares{};
    for (const Group& group : numbering.groups) {
        std::uint64_t place = index / group.multiplier % group.placements;
        switch (group.kind) {
        case GroupKind::THREE_MEN:
            std::copy_n(tables().three_men[place].begin(), 3, squares.begin());
            break;
        case GroupKind::TWO_KINGS:
            std::copy_n(tables().two_kings[place].begin(), 2, squares.begin());
            break;
        case GroupKind::LEADING_PAWNS: {
            // The first pawn walks up its file; the others have a lower order than it.
            int lead = 8 + numbering.file_position;
            for (;; lead += 8) {
                const auto order = static_cast<std::size_t>(pawn_rank_order(lead));
                const std::uint64_t with_it = tables().binomial[order][group.size - 1];
                if (place < with_it)
                    break;
                place -= with_it;
            }
            squares[0] = static_cast<std::uint8_t>(lead);
            for_combination(place, group.size - 1, [&](std::size_t k, std::uint64_t number) {
                squares[group.size - 1 - k] = tables().pawn_square[number];
            });
            break;
        }
        case GroupKind::OTHER_PAWNS:
            for_combination(place, group.size, [&](std::size_t k, std::uint64_t number) {
                squares[group.first + k] = free_square(number + 8, squares, group.first);
            });
            break;
        case GroupKind::MEN:
            for_combination(place, group.size, [&](std::size_t k, std::uint64_t number) {
                squares[group.first + k] = free_square(number, squares, group.first);
            });
            break;
        }
    }
    return squares;
}

} // namespace brindlemoth::tablegen
