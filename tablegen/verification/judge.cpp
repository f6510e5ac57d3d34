#include "verification/judge.h"

#include "system/parallel.h"

#include <algorithm>
#include <mutex>

namespace brindlemoth::tablegen {

static std::string describe(const Layout& layout, const Placement& placement, Side side) {
    std::string text;
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        text += layout.side[slot] == WHITE ? " w" : " b";
        text += " PNBRQK"[layout.kind[slot]];
        text += static_cast<char>('a' + placement[slot] % 8);
        text += static_cast<char>('1' + placement[slot] / 8);
    }
    return text + (side == WHITE ? ", White to move" : ", Black to move");
}

// Calls is_right(placement, side) for each legal position.
template <typename IsRight>
static Verdict judge_all(const Table& table, int threads, const Progress& progress,
                         const IsRight& is_right) {
    Verdict total;
    std::size_t first_piece = SIZE_MAX; // with something wrong, so far
    std::size_t done = 0;
    std::mutex adding;
    const std::size_t cells = cells_of(table.layout);
    const std::size_t stretch = 1 << 14;
    parallel_for(threads, (cells + stretch - 1) / stretch, [&](std::size_t piece) {
        Verdict part;
        for (std::size_t cell = piece * stretch; cell < std::min(cells, (piece + 1) * stretch);
             ++cell) {
            const Placement placement = placement_of(table.layout, cell);
            for (const Side side : {WHITE, BLACK}) {
                if (table.distance[side][cell] == ILLEGAL_DISTANCE)
                    continue;
                ++part.positions;
                if (!is_right(placement, side, table.distance[side][cell])) {
                    if (part.wrong++ == 0)
                        part.first_wrong = describe(table.layout, placement, side);
                }
            }
        }
        const std::lock_guard<std::mutex> lock(adding);
        total.positions += part.positions;
        total.wrong += part.wrong;
        if (part.wrong != 0 && piece < first_piece) {
            first_piece = piece;
            total.first_wrong = part.first_wrong;
        }
        ++done;
        if (progress)
            progress(static_cast<double>(done * stretch) / static_cast<double>(cells + stretch));
    });
    return total;
}

Verdict judge_wdl(const Table& table, const TableReader& reader, int threads,
                  const Progress& progress) {
    return judge_all(
        table, threads, progress, [&](const Placement& placement, Side side, int distance) {
            const auto place = find_position(reader, table.layout, placement, side);
            if (!place || place->index >= place->stream->positions)
                return false;
            const std::optional<int> stored = value_at(reader, *place->stream, place->index);
            if (!stored || *stored > 4)
                return false;
            // A reader takes the better of the stored value and the best capture; it does not look
            // at the stored value when a capture wins.
            const int wdl = wdl_of_distance(distance);
            const int capture = best_capture(table, placement, side);
            return capture == 2 || std::max(*stored - 2, capture) == wdl;
        });
}

Verdict judge_dtz(const Table& table, const TableReader& reader, int threads,
                  const Progress& progress) {
    return judge_all(
        table, threads, progress, [&](const Placement& placement, Side side, int distance) {
            const auto place = find_position(reader, table.layout, placement, side);
            const int wdl = wdl_of_distance(distance);
            if (!place || wdl == 0)
                return true; // not stored, not looked up
            if (wdl > 0) {
                const ZeroingMoves zeroing = zeroing_moves(table, placement, side);
                if (zeroing.best_capture == wdl || zeroing.best_pawn_move == wdl)
                    return true;
            }
            if (place->index >= place->stream->positions)
                return false;
            std::optional<int> value = value_at(reader, *place->stream, place->index);
            if (value && (place->stream->flags & 2) != 0) {
                // By WDL value: loss, spoilt loss, (draw), spoilt win, win.
                constexpr std::size_t map_of_wdl[5] = {1, 3, 0, 2, 0};
                const auto& map = place->stream->maps[map_of_wdl[wdl + 2]];
                const auto entry = static_cast<std::size_t>(*value);
                value = entry < map.size() ? std::optional<int>(map[entry]) : std::nullopt;
            }
            if (!value)
                return false;
            const int flags = place->stream->flags;
            const bool plies = (wdl == 2 && (flags & 4) != 0) || (wdl == -2 && (flags & 8) != 0);
            const int base = wdl == 2 || wdl == -2 ? 1 : 101;
            const int size = distance < 0 ? -distance : distance;
            const int read = base + (plies ? *value : 2 * *value);
            return read == size || (!plies && read + 1 == size);
        });
}

} // namespace brindlemoth::tablegen
