// Counts what a solved table holds, by walking over all of it.
#include "rules/geometry.h"
#include "solver/solver.h"
#include "system/parallel.h"

#include <algorithm>
#include <mutex>

namespace brindlemoth::tablegen {

void for_en_passant(const Table& table, const Placement& placement, Side side,
                    const std::function<void(std::size_t)>& visit) {
    const Layout& layout = table.layout;
    const int back = side == WHITE ? 8 : -8; // from the pushed pawn towards where it came from
    Squares occupied = 0;
    for (std::size_t slot = 0; slot < layout.men; ++slot)
        occupied |= bit(placement[slot]);
    for (std::size_t pushed = 0; pushed < layout.pawns; ++pushed) {
        const int square = placement[pushed];
        const bool may_have_pushed =
            layout.side[pushed] != side && square / 8 == (side == WHITE ? 4 : 3) &&
            (occupied & (bit(square + back) | bit(square + 2 * back))) == 0;
        if (!may_have_pushed)
            continue;
        bool ready = false;
        for (std::size_t slot = 0; slot < layout.pawns; ++slot) {
            ready |= layout.side[slot] == side &&
                     (geometry.attacks[side][PAWN][placement[slot]] & bit(square + back)) != 0;
        }
        Placement before = placement;
        before[pushed] = static_cast<std::uint8_t>(square + 2 * back);
        if (ready && !king_attacked(layout, before, side))
            visit(pushed);
    }
}

TableCounts count_positions(const Table& table, int threads) {
    const Layout& layout = table.layout;
    TableCounts total;
    std::mutex adding;
    const std::size_t cells = cells_of(layout);
    const std::size_t stretch = 1 << 14;
    parallel_for(threads, (cells + stretch - 1) / stretch, [&](std::size_t piece) {
        TableCounts part;
        for (std::size_t cell = piece * stretch; cell < std::min(cells, (piece + 1) * stretch);
             ++cell) {
            const Placement placement = placement_of(layout, cell);
            for (const Side side : {WHITE, BLACK}) {
                const int distance = table.distance[side][cell];
                if (distance == ILLEGAL_DISTANCE)
                    continue;
                ++part.legal;
                part.not_drawn += distance != 0 ? 1 : 0;
                part.mated += distance == -1 && !has_legal_move(table, placement, side) ? 1 : 0;
                for_en_passant(table, placement, side, [&](std::size_t pushed) {
                    const int with = distance_with_en_passant(table, placement, side, pushed);
                    ++part.legal;
                    ++part.en_passant;
                    part.not_drawn += with != 0 ? 1 : 0;
                });
            }
        }
        const std::lock_guard<std::mutex> lock(adding);
        total.legal += part.legal;
        total.en_passant += part.en_passant;
        total.not_drawn += part.not_drawn;
        total.mated += part.mated;
    });
    // Every cell stands for its reflections; like men were counted in every order.
    std::uint64_t orders = 1;
    for (const auto& side : layout.signature.count) {
        for (std::uint64_t alike : side)
            for (; alike > 1; --alike)
                orders *= alike;
    }
    const auto images = static_cast<std::uint64_t>(images_of(layout));
    for (std::uint64_t* number : {&total.legal, &total.en_passant, &total.not_drawn, &total.mated})
        *number = *number * images / orders;
    return total;
}

} // namespace brindlemoth::tablegen
