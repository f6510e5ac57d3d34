#include "file/stream_values.h"

#include "numbering/cell_walk.h"

#include <algorithm>
#include <bit>

namespace brindlemoth::tablegen {

namespace {

constexpr std::uint64_t REPORT_INTERVAL = 1 << 20; // indices between two reports of progress

// Stands for a raw DTZ value that no reader looks up: of an impossible position, of a draw, and
// where a capture or pawn move wins at once.
constexpr std::uint16_t DONT_CARE = 0xFFFF;

// The WDL values that may be stored for a position, bit 0 for -2 to bit 4 for 2: its own value;
// where its best capture is as good, that or any smaller one; where a capture wins, anything.
using WdlChoice = std::uint16_t;
constexpr WdlChoice LOSS = 1, BLESSED_LOSS = 2, DRAW = 4, CURSED_WIN = 8, WIN = 16;
constexpr WdlChoice ANY_WDL = 0x1F;

// A choice without a branch, so that the compiler can vectorize it.
WdlChoice pick(bool condition, WdlChoice yes, WdlChoice no) {
    const auto mask = static_cast<WdlChoice>(-static_cast<int>(condition));
    return static_cast<WdlChoice>((yes & mask) | (no & ~mask));
}

WdlChoice wdl_choice(Outcome outcome) {
    const Outcome plies = outcome & OUTCOME_PLIES;
    const bool lost = (outcome & OUTCOME_LOSS) != 0;
    const WdlChoice decided =
        pick(plies <= FIFTY_MOVES, pick(lost, LOSS, WIN), pick(lost, BLESSED_LOSS, CURSED_WIN));
    const WdlChoice own = pick(plies == 0, DRAW, decided);
    // The value of the best capture, if that does not win.
    const Outcome code = outcome & OUTCOME_ILLEGAL;
    const auto capture =
        static_cast<WdlChoice>(pick(code == 1 << OUTCOME_CAPTURE, LOSS, 0) |
                               pick(code == 2 << OUTCOME_CAPTURE, BLESSED_LOSS, 0) |
                               pick(code == 3 << OUTCOME_CAPTURE, DRAW, 0) |
                               pick(code == 4 << OUTCOME_CAPTURE, CURSED_WIN, 0));
    const auto lower = static_cast<WdlChoice>(own | (own - 1));
    return pick(code >= 5 << OUTCOME_CAPTURE, ANY_WDL, pick(own == capture, lower, own));
}

// Takes WDL choices in order and settles on values in as few runs as possible: a run goes on as
// long as one value suits all its positions.
struct WdlRuns {
    std::vector<ValueRun>* values = nullptr; // filled if given
    std::size_t runs = 0;
    std::size_t length = 0;
    WdlChoice common = ANY_WDL;

    void add(std::span<const WdlChoice> choices) {
        // Most stretches go on with the run.
        constexpr std::size_t STRETCH = 32;
        for (std::size_t i = 0; i < choices.size(); i += STRETCH) {
            const auto stretch = choices.subspan(i, std::min(STRETCH, choices.size() - i));
            WdlChoice all = common;
            for (const WdlChoice choice : stretch)
                all &= choice;
            if (all != 0) {
                common = all;
                length += stretch.size();
                continue;
            }
            for (const WdlChoice choice : stretch) {
                if ((common & choice) == 0) {
                    close();
                    common = choice;
                } else {
                    common &= choice;
                }
                ++length;
            }
        }
    }
    void close() {
        if (length != 0) {
            ++runs;
            if (values != nullptr) {
                // The draw is the most likely neighbour, then the loss and the win.
                const int value = (common & DRAW) != 0 ? 2 : std::countr_zero(common);
                append_values(*values, static_cast<std::uint16_t>(value), length);
            }
        }
        length = 0;
    }
};

// Written without branches, so that the compiler can vectorize it.
std::uint16_t raw_dtz_value(Outcome outcome) {
    const int plies = (outcome & OUTCOME_PLIES) - 1;
    const bool beyond_limit = plies >= FIFTY_MOVES;
    const int map = ((outcome & OUTCOME_LOSS) != 0 ? 1 : 0) + (beyond_limit ? 2 : 0);
    const int value = map << MAP_SHIFT | (beyond_limit ? plies - FIFTY_MOVES : plies);
    const bool free = (outcome & OUTCOME_ZEROES) != 0 || (outcome & OUTCOME_PLIES) == 0;
    return static_cast<std::uint16_t>(free || !is_legal(outcome) ? DONT_CARE : value);
}

// Calls visit(values) with value_of() the outcomes at a stream's indices, in order and in batches.
// The outcomes of a batch are read together, because each of them is a cache miss. value_of() is a
// template argument so that it is inlined.
template <auto value_of, typename Visit>
void for_values(const Part& part, const NumberedSide& stream, std::uint64_t first,
                std::uint64_t last, const Visit& visit, Progress progress = {}) {
    using Value = decltype(value_of(Outcome{}));
    CellWalk walk = cell_walk_from(part.table.layout, stream.numbering, first);
    const Outcome* const outcomes = part.outcomes[stream.side].data();
    const auto first_cell = static_cast<std::uint32_t>(64 * part.first_word);
    CellBatch cell;
    std::array<Outcome, CELL_BATCH> outcome;
    std::array<Value, CELL_BATCH> value;
    std::uint64_t reported = first;
    for (std::uint64_t index = first; index < last;) {
        const std::size_t count =
            std::min<std::uint64_t>(take_cells(walk, cell, last - index), last - index);
        for (std::size_t i = 0; i < count; ++i)
            cell[i] = static_cast<std::uint32_t>(outcome_place(cell[i] - first_cell));
        for (std::size_t i = 0; i < count; ++i)
            outcome[i] = outcomes[cell[i]];
        for (std::size_t i = 0; i < count; ++i)
            value[i] = value_of(outcome[i]);
        visit(std::span<const Value>(value).first(count));
        index += count;
        if (index - reported >= REPORT_INTERVAL) {
            reported = index;
            progress.report(static_cast<double>(index) / static_cast<double>(last));
        }
    }
}

void add_wdl_choices(const Part& part, const NumberedSide& stream, std::uint64_t first,
                     std::uint64_t last, WdlRuns& runs, Progress progress = {}) {
    for_values<wdl_choice>(
        part, stream, first, last, [&](std::span<const WdlChoice> choices) { runs.add(choices); },
        std::move(progress));
    runs.close();
}

} // namespace

std::size_t count_wdl_runs(const Part& part, const NumberedSide& stream, std::uint64_t first,
                           std::uint64_t last) {
    WdlRuns runs;
    add_wdl_choices(part, stream, first, last, runs);
    return runs.runs;
}

// Counts as if all distances were stored in moves.
std::size_t count_dtz_runs(const Part& part, const NumberedSide& stream, std::uint64_t first,
                           std::uint64_t last) {
    std::size_t runs = 0;
    int current = DONT_CARE;
    const auto count = [&](std::span<const std::uint16_t> values) {
        for (const std::uint16_t value : values) {
            if (value != DONT_CARE && value / 2 != current) {
                ++runs;
                current = value / 2;
            }
        }
    };
    for_values<raw_dtz_value>(part, stream, first, last, count);
    return runs;
}

std::vector<ValueRun> wdl_runs(const Part& part, const NumberedSide& stream, Progress progress) {
    std::vector<ValueRun> values;
    WdlRuns runs;
    runs.values = &values;
    add_wdl_choices(part, stream, 0, stream.numbering.positions, runs, std::move(progress));
    return values;
}

// A value that no reader looks up continues the run before it.
std::vector<ValueRun> raw_dtz_runs(const Part& part, const NumberedSide& stream,
                                   Progress progress) {
    std::vector<ValueRun> runs;
    std::uint16_t current = DONT_CARE;
    std::size_t length = 0;
    const auto add = [&](std::span<const std::uint16_t> values) {
        for (const std::uint16_t value : values) {
            if (value != DONT_CARE && value != current) {
                if (current != DONT_CARE) {
                    append_values(runs, current, length);
                    length = 0;
                }
                current = value;
            }
            ++length;
        }
    };
    for_values<raw_dtz_value>(part, stream, 0, stream.numbering.positions, add,
                              std::move(progress));
    append_values(runs, current != DONT_CARE ? current : std::uint16_t{0}, length);
    return runs;
}

} // namespace brindlemoth::tablegen
