#include "solver/table.h"

#include "rules/geometry.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

namespace brindlemoth::tablegen {

constexpr std::size_t KINDS = 7;

static Side opponent(Side side) {
    return side == WHITE ? BLACK : WHITE;
}

static Squares occupied_squares(const Layout& layout, const Placement& placement) {
    Squares occupied = 0;
    for (std::size_t slot = 0; slot < layout.men; ++slot)
        occupied |= bit(placement[slot]);
    return occupied;
}

int wdl_at(const Table& table, Side side, std::size_t cell) {
    if (!table.wdl[side].empty())
        return table.wdl[side][cell];
    const int distance = table.distance[side][cell];
    return distance == ILLEGAL_DISTANCE ? ILLEGAL_WDL : wdl_of_distance(distance, table.limit);
}

static const Conversion& conversion(const Table& table, std::size_t captured, std::size_t promoting,
                                    Kind promoted) {
    const std::size_t slots = table.layout.men + 1;
    return table.conversions[(captured * slots + promoting) * KINDS + promoted];
}

// The value, for the side that moved, of the position after a conversion; NO_VALUE if the move
// was not legal.
static int value_after(const Conversion& conversion, const Placement& placement, Side mover) {
    const Table& table = *conversion.table;
    Placement after{};
    const unsigned flip = conversion.exchanged ? 56 : 0;
    for (std::size_t slot = 0; slot < table.layout.men; ++slot)
        after[slot] = static_cast<std::uint8_t>(placement[conversion.slot[slot]] ^ flip);
    const Side to_move = conversion.exchanged ? mover : opponent(mover);
    const int wdl = wdl_at(table, to_move, cell_of(table.layout, after));
    return wdl == ILLEGAL_WDL ? NO_VALUE : -wdl;
}

static bool on_last_rank(int square) {
    return square < 8 || square >= 56;
}

// The best value of moving the pawn in `slot` to a square of the last rank.
static int best_promotion(const Table& table, const Placement& after, Side mover,
                          std::size_t captured, std::size_t slot) {
    int best = NO_VALUE;
    for (const Kind kind : {QUEEN, ROOK, BISHOP, KNIGHT})
        best = std::max(best, value_after(conversion(table, captured, slot, kind), after, mover));
    return best;
}

static int best_capture_among(const Table& table, const Placement& placement, Side side,
                              Squares occupied) {
    const Layout& layout = table.layout;
    int best = NO_VALUE;
    for (std::size_t victim = 0; victim < layout.men; ++victim) {
        if (layout.side[victim] == side || layout.kind[victim] == KING)
            continue;
        const int target = placement[victim];
        for (std::size_t slot = 0; slot < layout.men; ++slot) {
            if (layout.side[slot] != side ||
                !attacks(side, layout.kind[slot], placement[slot], target, occupied))
                continue;
            Placement after = placement;
            after[slot] = static_cast<std::uint8_t>(target);
            const int value =
                layout.kind[slot] == PAWN && on_last_rank(target)
                    ? best_promotion(table, after, side, victim, slot)
                    : value_after(conversion(table, victim, layout.men, NO_KIND), after, side);
            best = std::max(best, value);
        }
    }
    return best;
}

// The value, for the side that moved, of the position of this same table after a pawn move.
static int value_of_step(const Table& table, const Placement& after, Side mover, std::size_t pushed,
                         bool two_ranks) {
    const Side to_move = opponent(mover);
    const std::size_t cell = cell_of(table.layout, after);
    if (table.distance[to_move][cell] == ILLEGAL_DISTANCE)
        return NO_VALUE;
    const int distance = two_ranks ? distance_with_en_passant(table, after, to_move, pushed)
                                   : table.distance[to_move][cell];
    return -wdl_of_distance(distance, table.limit);
}

static int best_pawn_move(const Table& table, const Placement& placement, Side side,
                          Squares occupied) {
    const Layout& layout = table.layout;
    const int forward = side == WHITE ? 8 : -8;
    int best = NO_VALUE;
    for (std::size_t slot = 0; slot < layout.pawns; ++slot) {
        const int from = placement[slot];
        if (layout.side[slot] != side || (occupied & bit(from + forward)) != 0)
            continue;
        Placement after = placement;
        after[slot] = static_cast<std::uint8_t>(from + forward);
        if (on_last_rank(from + forward)) {
            best = std::max(best, best_promotion(table, after, side, layout.men, slot));
            continue;
        }
        best = std::max(best, value_of_step(table, after, side, slot, false));
        const bool on_start = from / 8 == (side == WHITE ? 1 : 6);
        if (on_start && (occupied & bit(from + 2 * forward)) == 0) {
            after[slot] = static_cast<std::uint8_t>(from + 2 * forward);
            best = std::max(best, value_of_step(table, after, side, slot, true));
        }
    }
    return best;
}

ZeroingMoves zeroing_moves(const Table& table, const Placement& placement, Side side) {
    const Squares occupied = occupied_squares(table.layout, placement);
    return {best_capture_among(table, placement, side, occupied),
            best_pawn_move(table, placement, side, occupied)};
}

int best_capture(const Table& table, const Placement& placement, Side side) {
    return best_capture_among(table, placement, side, occupied_squares(table.layout, placement));
}

bool king_attacked(const Layout& layout, const Placement& placement, Side side) {
    const Squares occupied = occupied_squares(layout, placement);
    const int king = placement[layout.king_slot[side]];
    for (std::size_t slot = 0; slot < layout.men; ++slot)
        if (layout.side[slot] != side &&
            attacks(layout.side[slot], layout.kind[slot], placement[slot], king, occupied))
            return true;
    return false;
}

static bool has_quiet_move(const Table& table, const Placement& placement, Side side) {
    const Layout& layout = table.layout;
    const Squares occupied = occupied_squares(layout, placement);
    for (std::size_t slot = layout.pawns; slot < layout.men; ++slot) {
        const Kind kind = layout.kind[slot];
        if (layout.side[slot] != side)
            continue;
        for (std::size_t to = 0; to < 64; ++to) {
            if ((occupied & bit(static_cast<int>(to))) != 0 ||
                !attacks(side, kind, placement[slot], static_cast<int>(to), occupied))
                continue;
            Placement after = placement;
            after[slot] = static_cast<std::uint8_t>(to);
            const std::size_t cell = cell_of(layout, after);
            if (table.distance[opponent(side)][cell] != ILLEGAL_DISTANCE)
                return true;
        }
    }
    return false;
}

bool has_legal_move(const Table& table, const Placement& placement, Side side) {
    const ZeroingMoves zeroing = zeroing_moves(table, placement, side);
    return zeroing.best_capture != NO_VALUE || zeroing.best_pawn_move != NO_VALUE ||
           has_quiet_move(table, placement, side);
}

// The best value of taking the pawn in slot `pushed` in passing, NO_VALUE if no pawn can.
static int best_en_passant(const Table& table, const Placement& placement, Side side,
                           std::size_t pushed) {
    const Layout& layout = table.layout;
    const int target = placement[pushed] + (side == WHITE ? 8 : -8);
    int best = NO_VALUE;
    for (std::size_t slot = 0; slot < layout.pawns; ++slot) {
        if (layout.side[slot] == side &&
            (geometry.attacks[side][PAWN][placement[slot]] & bit(target)) != 0) {
            Placement after = placement;
            after[slot] = static_cast<std::uint8_t>(target);
            const Conversion& taken = conversion(table, pushed, layout.men, NO_KIND);
            best = std::max(best, value_after(taken, after, side));
        }
    }
    return best;
}

int distance_with_en_passant(const Table& table, const Placement& placement, Side side,
                             std::size_t pushed) {
    const int without = table.distance[side][cell_of(table.layout, placement)];
    const int capture = best_en_passant(table, placement, side, pushed);
    if (capture == NO_VALUE)
        return without;
    const int wdl = wdl_of_distance(without, table.limit);
    const int zeroing = distance_of_zeroing(capture, table.limit);
    if (capture == wdl) {
        // A winning capture shortens the way; beside a losing one the side plays on if it can.
        return wdl > 0 ? std::min(without, zeroing) : without;
    }
    if (capture < wdl) {
        // The capture is forced where the side would be stalemated without it.
        return wdl == 0 && !has_legal_move(table, placement, side) ? zeroing : without;
    }
    return zeroing;
}

// The slots of a layout matched with the men left after a conversion.
static Conversion make_conversion(const Layout& before, const TableSet& solved,
                                  std::size_t captured, std::size_t promoting, Kind promoted) {
    Layout left = before;
    if (promoting < before.men)
        left.kind[promoting] = promoted;
    Signature signature;
    for (std::size_t slot = 0; slot < left.men; ++slot)
        if (slot != captured)
            ++signature.count[left.side[slot]][left.kind[slot]];
    Conversion made;
    const auto found = solved.find(name_of(canonical(signature, &made.exchanged)));
    assert(found != solved.end());
    made.table = found->second.get();
    const Layout& after = made.table->layout;
    std::array<bool, 8> used{};
    for (std::size_t to = 0; to < after.men; ++to) {
        const Side side = made.exchanged ? opponent(after.side[to]) : after.side[to];
        std::size_t from = 0;
        while (used[from] || from == captured || left.kind[from] != after.kind[to] ||
               left.side[from] != side)
            ++from;
        used[from] = true;
        made.slot[to] = static_cast<std::uint8_t>(from);
    }
    return made;
}

std::unique_ptr<Table> make_table(const Signature& signature, const TableSet& solved, int limit) {
    auto table = std::make_unique<Table>();
    table->layout = make_layout(signature);
    table->limit = limit;
    const Layout& layout = table->layout;
    const std::size_t none = layout.men;
    const std::size_t slots = none + 1;
    table->conversions.resize(slots * slots * KINDS);
    for (std::size_t captured = 0; captured <= none; ++captured) {
        if (captured < none && layout.kind[captured] == KING)
            continue;
        for (std::size_t promoting = 0; promoting <= none; ++promoting) {
            const bool capture_only = promoting == none;
            const bool own_pawn =
                promoting < layout.pawns &&
                (captured == none || layout.side[captured] != layout.side[promoting]);
            if (capture_only ? captured == none : !own_pawn)
                continue;
            for (std::size_t kind = NO_KIND; kind <= QUEEN; ++kind) {
                if (capture_only ? kind == NO_KIND : kind >= KNIGHT) {
                    table->conversions[(captured * slots + promoting) * KINDS + kind] =
                        make_conversion(layout, solved, captured, promoting,
                                        static_cast<Kind>(kind));
                }
            }
        }
    }
    return table;
}

void drop_distances(Table& table) {
    for (const Side side : {WHITE, BLACK}) {
        std::vector<std::int16_t>& distance = table.distance[side];
        table.wdl[side].resize(distance.size());
        std::transform(distance.begin(), distance.end(), table.wdl[side].begin(), [&](int value) {
            return static_cast<std::int8_t>(
                value == ILLEGAL_DISTANCE ? ILLEGAL_WDL : wdl_of_distance(value, table.limit));
        });
        distance = {};
    }
}

} // namespace brindlemoth::tablegen
