#include "numbering/numbering.h"

#include "rules/geometry.h"

#include <algorithm>
#include <bit>
#include <map>
#include <mutex>
#include <utility>

namespace brindlemoth::tablegen {

constexpr std::uint8_t SQUARES = 64;

// Binomial coefficients, [n][k].
static const auto binomial = [] {
    std::array<std::array<std::uint64_t, 7>, 65> made{};
    for (std::size_t n = 0; n < made.size(); ++n)
        for (std::size_t k = 0; k < made[n].size(); ++k)
            made[n][k] = k == 0 ? 1 : n == 0 ? 0 : made[n - 1][k - 1] + made[n - 1][k];
    return made;
}();

// The members of a set of `size` numbers, least first, from the set's place among all such.
static void set_combination(std::uint8_t* member, std::size_t size, std::uint64_t place) {
    for (std::size_t k = size; k >= 1; --k) {
        std::size_t number = k - 1;
        while (binomial[number + 1][k] <= place)
            ++number;
        place -= binomial[number][k];
        member[k - 1] = static_cast<std::uint8_t>(number);
    }
}

// The set at the next place.
static void next_combination(std::uint8_t* member, std::size_t size) {
    std::size_t k = 0;
    for (; k + 1 < size && member[k] + 1 == member[k + 1]; ++k)
        member[k] = static_cast<std::uint8_t>(k);
    ++member[k];
}

// The leading pieces of a signature without pawns: three single ones, or the kings, which must not
// touch. The list has a range for each number of first pieces that stand on the diagonal a1-h8. The
// piece after them stands below the diagonal. The first piece is on files a to d. Later pieces vary
// faster.
static std::vector<FileSquares> list_pieces(std::size_t count) {
    std::vector<FileSquares> list;
    for (std::size_t on_diagonal = 0; on_diagonal <= count; ++on_diagonal) {
        std::vector<FileSquares> range = {FileSquares{}};
        for (std::size_t piece = 0; piece < count; ++piece) {
            std::vector<FileSquares> longer;
            for (const FileSquares& before : range) {
                for (std::uint8_t square = 0; square < SQUARES; ++square) {
                    const int file = square % 8;
                    const int rank = square / 8;
                    const auto* const end = before.begin() + piece;
                    const bool touches =
                        count == 2 && piece == 1 &&
                        (geometry.attacks[WHITE][KING][before[0]] >> square & 1) != 0;
                    if (touches || std::find(before.begin(), end, square) != end ||
                        (piece == 0 && file > 3) || (piece < on_diagonal && file != rank) ||
                        (piece == on_diagonal && file <= rank))
                        continue;
                    longer.push_back(before);
                    longer.back()[piece] = square;
                }
            }
            range = std::move(longer);
        }
        list.insert(list.end(), range.begin(), range.end());
    }
    return list;
}

// The leading pawns. The squares of the first one are those of its file, from the second rank up.
// The others come after it in the order of pawn squares, which runs file by file from the edge and
// up each file, mirror images side by side: a2 is the last, e7 the first.
static std::vector<FileSquares> list_pawns(std::size_t count, int file) {
    auto order_of = [](int square) {
        const int outer = std::min(square % 8, 7 - square % 8);
        return 47 - 12 * outer - 2 * (square / 8 - 1) - (square % 8 > 3 ? 1 : 0);
    };
    std::array<std::uint8_t, PAWN_SQUARES> square_of{};
    for (std::uint8_t square = 8; square < 56; ++square)
        square_of[static_cast<std::size_t>(order_of(square))] = square;
    std::vector<FileSquares> list;
    for (int lead = 8 + file; lead < 56; lead += 8) {
        const auto order = static_cast<std::size_t>(order_of(lead));
        for (std::uint64_t place = 0; place < binomial[order][count - 1]; ++place) {
            FileSquares member{};
            FileSquares men{static_cast<std::uint8_t>(lead)};
            set_combination(member.data(), count - 1, place);
            for (std::size_t k = 1; k < count; ++k)
                men[k] = square_of[member[count - 1 - k]];
            list.push_back(men);
        }
    }
    return list;
}

// How many men lead, and the placements that they have. Lists are made at their first use.
static std::pair<std::size_t, const std::vector<FileSquares>*>
leading_men(const Signature& signature, int file_position) {
    std::size_t men = signature.count[leading_colour(signature)][PAWN];
    const bool pawns = men > 0;
    if (!pawns) {
        // Three single men, unless there are none but the two kings.
        std::ptrdiff_t single = 0;
        for (const auto& side : signature.count)
            single += std::count(side.begin(), side.end(), 1);
        men = single == 2 ? 2 : 3;
    }
    static std::map<std::pair<std::size_t, int>, std::vector<FileSquares>> lists;
    static std::mutex making;
    const std::lock_guard<std::mutex> lock(making);
    std::vector<FileSquares>& list = lists[{men, pawns ? file_position : -1}];
    if (list.empty())
        list = pawns ? list_pawns(men, file_position) : list_pieces(men);
    return {men, &list};
}

// The kinds of men that a signature has, as piece codes in rising order.
static std::vector<std::uint8_t> kinds_of(const Signature& signature) {
    std::vector<std::uint8_t> kinds;
    for (const Side side : {WHITE, BLACK})
        for (std::uint8_t kind = PAWN; kind <= KING; ++kind)
            if (signature.count[side][kind] != 0)
                kinds.push_back(static_cast<std::uint8_t>(kind + 8 * side));
    return kinds;
}

// Whether a stream may begin with the first of these kinds: the leading pawns and then the other
// pawns; without pawns as many single men as lead, or the two kings.
static bool may_begin_with(const std::vector<std::uint8_t>& kinds, const Signature& signature) {
    const auto single = [&](std::uint8_t piece) {
        return signature.count[side_of(piece)][kind_of(piece)] == 1;
    };
    if (pawns_of(signature) != 0) {
        const Side lead = leading_colour(signature);
        const bool one_group = signature.count[opponent(lead)][PAWN] == 0;
        return kinds[0] == PAWN + 8 * lead && (one_group || kinds[1] == PAWN + 8 * opponent(lead));
    }
    if (leading_men(signature, 0).first == 2)
        return kind_of(kinds[0]) == KING && kind_of(kinds[1]) == KING;
    return std::all_of(kinds.begin(), kinds.begin() + 3, single);
}

std::vector<StreamOrder> possible_orders(const Signature& signature) {
    std::vector<std::uint8_t> kinds = kinds_of(signature);
    const bool pawns = pawns_of(signature) != 0;
    const bool two_pawn_groups =
        pawns && signature.count[opponent(leading_colour(signature))][PAWN] != 0;
    // A group for each kind, but one for all men that lead.
    const std::size_t joined = pawns ? 0 : leading_men(signature, 0).first - 1;
    const int groups = static_cast<int>(kinds.size() - joined);
    std::vector<StreamOrder> result;
    do {
        if (!may_begin_with(kinds, signature))
            continue;
        StreamOrder order;
        auto* next = order.piece.begin();
        for (const std::uint8_t piece : kinds)
            next = std::fill_n(next, signature.count[side_of(piece)][kind_of(piece)], piece);
        for (order.order = 0; order.order < groups; ++order.order) {
            for (int second = 0; second < (two_pawn_groups ? groups : 1); ++second) {
                order.order2 = two_pawn_groups ? second : NO_TURN;
                if (order.order2 != order.order)
                    result.push_back(order);
            }
        }
    } while (std::next_permutation(kinds.begin(), kinds.end()));
    return result;
}

Numbering make_numbering(const Signature& signature, int file_position, const StreamOrder& order) {
    Numbering made;
    made.men = static_cast<std::size_t>(men_of(signature));
    made.order = order;
    const auto [leading, list] = leading_men(signature, file_position);
    made.leading = list;
    made.groups.push_back({0, leading, 0, list->size(), 0});
    // The other pawns come next; they and like men stand side by side.
    for (std::size_t first = leading, end = first; first < made.men; first = end) {
        while (end < made.men && order.piece[end] == order.piece[first])
            ++end;
        const bool pawns = kind_of(order.piece[first]) == PAWN;
        const std::size_t free = pawns ? PAWN_SQUARES - leading : SQUARES - first;
        made.groups.push_back({first, end - first, pawns ? std::uint8_t{8} : std::uint8_t{0},
                               binomial[free][end - first], 0});
    }
    // The multipliers, in the order of the turns.
    made.positions = 1;
    std::size_t following = order.order2 == NO_TURN ? 1 : 2;
    for (int turn = 0; turn < static_cast<int>(made.groups.size()); ++turn) {
        const std::size_t group = turn == order.order ? 0 : turn == order.order2 ? 1 : following++;
        made.turns.push_back(group);
        made.groups[group].multiplier = made.positions;
        made.positions *= made.groups[group].placements;
    }
    return made;
}

// The square that has this many free ones before it: those that are taken are skipped.
static std::uint8_t free_square(int number, Squares taken) {
    for (; taken != 0; taken &= taken - 1)
        number += std::countr_zero(taken) <= number ? 1 : 0;
    return static_cast<std::uint8_t>(number);
}

// Sets the squares of all men from a group on, and what depends on them.
static void place_men(Walk& walk, std::size_t first_group) {
    const std::vector<Group>& groups = walk.numbering->groups;
    const std::size_t fastest = walk.numbering->turns[0];
    if (first_group == 0)
        std::copy_n((*walk.numbering->leading)[walk.place[0]].begin(), groups[0].size,
                    walk.squares.begin());
    Squares taken = 0;
    std::size_t man = 0;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const Group& group = groups[i];
        const std::size_t end = group.first + group.size;
        if (i == fastest)
            walk.before = taken;
        if (i > 0 && i >= first_group)
            for (std::size_t next = man; next < end; ++next)
                walk.squares[next] = free_square(walk.member[next] + group.lowest_square, taken);
        for (; man < end; ++man)
            taken |= Squares{1} << walk.squares[man];
        if (i == fastest)
            walk.after = taken;
    }
    walk.after ^= taken;
}

Walk walk_from(const Numbering& numbering, std::uint64_t index) {
    Walk walk{&numbering};
    for (std::size_t i = 0; i < numbering.groups.size(); ++i) {
        const Group& group = numbering.groups[i];
        walk.place[i] = index / group.multiplier % group.placements;
        if (i > 0)
            set_combination(&walk.member[group.first], group.size, walk.place[i]);
    }
    place_men(walk, 0);
    return walk;
}

std::size_t moving_man(const Numbering& numbering) {
    // The last of the leading men varies fastest, as does the first of like men.
    const std::size_t fastest = numbering.turns[0];
    return fastest == 0 ? numbering.groups[0].size - 1 : numbering.groups[fastest].first;
}

// Squares from the lower to the higher of two, both included.
static Squares squares_from_to(int a, int b) {
    const auto [low, high] = std::minmax(a, b);
    return ~Squares{0} << low & ~(~Squares{1} << high);
}

// Adds the squares after the first one to a row of the last leading man.
static void extend_leading_row(const Walk& walk, Row& row) {
    const std::vector<FileSquares>& list = *walk.numbering->leading;
    const FileSquares& first = list[walk.place[0]];
    const std::uint64_t end = std::min<std::uint64_t>(list.size(), walk.place[0] + SQUARES);
    for (std::uint64_t next = walk.place[0] + 1; next < end; ++next) {
        const std::uint8_t from = row.square[row.length - 1];
        const std::uint8_t to = list[next][row.man];
        // A later man gives way to one that crosses its square.
        std::size_t alike = 0;
        while (alike < row.man && list[next][alike] == first[alike])
            ++alike;
        if (alike < row.man || (walk.after & squares_from_to(from, to)) != 0)
            return;
        row.square[row.length++] = to;
    }
}

// The same for the first man of a later group, which goes from each free square to the next.
static void extend_later_row(const Walk& walk, const Group& moving, Row& row) {
    const std::uint64_t members =
        moving.size == 1 ? moving.placements : walk.member[moving.first + 1];
    const std::uint64_t most = members - walk.member[row.man];
    const Squares above = ~Squares{1} << row.square[0];
    // The row ends before the next man of a later group.
    const Squares in_the_way = walk.after & above;
    const Squares below = in_the_way != 0 ? (in_the_way & -in_the_way) - 1 : ~Squares{0};
    for (Squares free = above & below & ~walk.before; free != 0 && row.length < most;
         free &= free - 1)
        row.square[row.length++] = static_cast<std::uint8_t>(std::countr_zero(free));
}

void take_row(Walk& walk, Row& row) {
    const Numbering& numbering = *walk.numbering;
    const std::size_t fastest = numbering.turns[0];
    row.man = moving_man(numbering);
    row.length = 1;
    row.square[0] = walk.squares[row.man];
    if (fastest == 0)
        extend_leading_row(walk, row);
    else
        extend_later_row(walk, numbering.groups[fastest], row);
    walk.place[fastest] += row.length - 1;
    walk.member[row.man] = static_cast<std::uint8_t>(walk.member[row.man] + row.length - 1);

    std::size_t first_changed = numbering.groups.size();
    for (const std::size_t i : numbering.turns) {
        const Group& group = numbering.groups[i];
        const bool wraps = ++walk.place[i] == group.placements;
        if (wraps)
            walk.place[i] = 0;
        if (i > 0 && wraps)
            set_combination(&walk.member[group.first], group.size, 0);
        else if (i > 0)
            next_combination(&walk.member[group.first], group.size);
        first_changed = std::min(first_changed, i);
        if (!wraps)
            break;
    }
    place_men(walk, first_changed);
    walk.changed = numbering.groups[first_changed].first;
}

} // namespace brindlemoth::tablegen
