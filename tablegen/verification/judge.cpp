#include "verification/judge.h"

#include "numbering/cell_walk.h"

#include <algorithm>

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

// A reader takes the better of the stored value and the best capture.
static bool wdl_is_right(Outcome outcome, int stored) {
    const int capture = capture_of(outcome);
    return stored <= 4 &&
           (capture == 2 || std::max(stored - 2, capture) == wdl_of_distance(distance_of(outcome)));
}

static bool dtz_is_right(Outcome outcome, const ReaderStream& stream, int stored) {
    const int distance = distance_of(outcome);
    if (distance == 0 || (outcome & OUTCOME_ZEROES) != 0)
        return true; // readers do not look here
    const int size = distance < 0 ? -distance : distance;
    const bool beyond_limit = size > FIFTY_MOVES;
    if ((stream.flags & DTZ_MAPPED) != 0) {
        // Wins, losses, cursed wins, blessed losses.
        const std::vector<int>& map =
            stream.maps[(distance < 0 ? 1U : 0U) + (beyond_limit ? 2U : 0U)];
        if (static_cast<std::size_t>(stored) >= map.size())
            return false;
        stored = map[static_cast<std::size_t>(stored)];
    }
    const bool plies =
        !beyond_limit &&
        (stream.flags & (distance < 0 ? DTZ_LOSSES_IN_PLIES : DTZ_WINS_IN_PLIES)) != 0;
    const int read = (beyond_limit ? FIFTY_MOVES : 0) + 1 + (plies ? stored : 2 * stored);
    return read == size || (!plies && read + 1 == size);
}

static void judge_stream(const Part& part, const TableReader& reader, const ReaderStream& stream,
                         Side side, Progress progress, Verdict& verdict) {
    const Layout& layout = part.table.layout;
    CellWalk walk = cell_walk_from(layout, stream.numbering, 0);
    CellBatch cells;
    std::size_t batch = 0; // cells of the batch, and how many of them have been met
    std::size_t met = 0;
    std::uint64_t index = 0;
    const bool whole = read_values(reader, stream, [&](std::span<const std::uint16_t> values) {
        for (const std::uint16_t value : values) {
            if (met == batch) {
                batch = take_cells(walk, cells);
                met = 0;
            }
            const Outcome outcome = part.outcome(side, cells[met++]);
            if (is_legal(outcome)) {
                ++verdict.positions;
                const bool right = reader.kind == FileKind::DTZ
                                       ? dtz_is_right(outcome, stream, value)
                                       : wdl_is_right(outcome, value);
                if (!right && verdict.wrong++ == 0)
                    verdict.first_wrong =
                        describe(layout, placement_at(layout, stream.numbering, index), side);
            }
            ++index;
        }
        progress.report(static_cast<double>(index) /
                        static_cast<double>(stream.numbering.positions));
    });
    if (!whole && verdict.wrong++ == 0)
        verdict.first_wrong = " where the data end";
}

void add_verdict(Verdict& verdict, const Verdict& other) {
    if (verdict.wrong == 0)
        verdict.first_wrong = other.first_wrong;
    verdict.wrong += other.wrong;
    verdict.positions += other.positions;
}

Verdict judge(const Part& part, const TableReader& reader, Progress progress) {
    Verdict verdict;
    const std::size_t first = static_cast<std::size_t>(part.file_position) * reader.sides;
    // Where both sides have the same men, readers use the first stream only.
    const bool symmetric = is_symmetric(reader.signature);
    const bool dtz = reader.kind == FileKind::DTZ;
    const std::size_t streams = symmetric ? 1 : reader.sides;
    for (std::size_t i = 0; i < streams; ++i) {
        const ReaderStream& stream = reader.streams[first + i];
        const bool black = dtz ? !symmetric && (stream.flags & DTZ_BLACK_TO_MOVE) != 0 : i == 1;
        judge_stream(part, reader, stream, black ? BLACK : WHITE,
                     progress.part(1 / static_cast<double>(streams)), verdict);
    }
    return verdict;
}

} // namespace brindlemoth::tablegen
