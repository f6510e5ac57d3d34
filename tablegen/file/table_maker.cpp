#include "file/table_maker.h"

#include "numbering/cell_walk.h"
#include "system/parallel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <utility>

namespace brindlemoth::tablegen {

// Readers decode half a block on average: WDL probes happen in the middle of a search.
constexpr int WDL_BLOCK_SIZE_LOG2 = 6;
constexpr int DTZ_BLOCK_SIZE_LOG2 = 10;

// Orders of men are compared on short stretches of indices, in rounds: each leaves the better half
// in play, and the next looks at more.
constexpr double FIRST_SAMPLES = 16;
constexpr double MORE_SAMPLES = 1.7;
constexpr std::uint64_t SAMPLE_LENGTH = 256;

// Shares of the work on a stream, about, when its order is chosen and when its values are made.
constexpr double ORDERED = 0.1;
constexpr double VALUES_MADE = 0.6;
constexpr std::uint64_t BETWEEN_REPORTS = 1 << 20;

// In a sequence of DTZ values: no reader looks here.
constexpr std::uint16_t UNUSED = 0xFFFF;
constexpr int MAP_SHIFT = 12; // where the number of a value's map stands before it is mapped
constexpr std::uint16_t VALUE_MASK = (1 << MAP_SHIFT) - 1;

// The WDL values that may be stored for a position, bit 0 for -2 to bit 4 for 2: its own value;
// where its best capture is as good, that or any smaller one; where a capture wins, anything.
using WdlChoice = std::uint16_t;
constexpr WdlChoice ANY_WDL = 0x1F;

// A choice without a branch, which the compiler can make for many cells at once.
static WdlChoice pick(bool condition, WdlChoice yes, WdlChoice no) {
    const auto mask = static_cast<WdlChoice>(-static_cast<int>(condition));
    return static_cast<WdlChoice>((yes & mask) | (no & ~mask));
}

static WdlChoice wdl_choice(Cell cell) {
    constexpr WdlChoice LOSS = 1, SAVED = 2, DRAW = 4, SPOILT = 8, WIN = 16;
    const Cell plies = cell & CELL_PLIES;
    const bool lost = (cell & CELL_LOSS) != 0;
    const WdlChoice decided =
        pick(plies <= FIFTY_MOVES, pick(lost, LOSS, WIN), pick(lost, SAVED, SPOILT));
    const WdlChoice own = pick(plies == 0, DRAW, decided);
    // The value of the best capture, if that does not win.
    const Cell code = cell & CELL_ILLEGAL;
    const auto capture = static_cast<WdlChoice>(
        pick(code == 1 << CELL_CAPTURE, LOSS, 0) | pick(code == 2 << CELL_CAPTURE, SAVED, 0) |
        pick(code == 3 << CELL_CAPTURE, DRAW, 0) | pick(code == 4 << CELL_CAPTURE, SPOILT, 0));
    const auto lower = static_cast<WdlChoice>(own | (own - 1));
    return pick(code >= 5 << CELL_CAPTURE, ANY_WDL, pick(own == capture, lower, own));
}

bool dtz_matters(Cell cell) {
    return is_legal(cell) && (cell & CELL_PLIES) != 0 && (cell & CELL_ZEROES) == 0;
}

namespace {

// Meets the WDL choices in order and settles on values in as few runs as can be: a run goes on
// as long as one value suits all its positions.
struct WdlRuns {
    std::vector<ValueRun>* values = nullptr; // filled if given
    std::size_t runs = 0;
    std::size_t length = 0;
    WdlChoice common = ANY_WDL;

    void meet(std::span<const WdlChoice> choices) {
        // Most stretches go on with the run.
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
                // The draw is the most likely value around, then the loss and the win.
                const int value = (common & 4) != 0 ? 2 : std::countr_zero(common);
                append_values(*values, static_cast<std::uint16_t>(value), length);
            }
        }
        length = 0;
    }

private:
    static constexpr std::size_t STRETCH = 32;
};

// A way to number a stream, and how well it has done so far.
struct Candidate {
    Side side;
    Numbering numbering;
    std::size_t runs = 0;
};

} // namespace

// What is stored for a position before any map: plies beyond the least of its kind (1, or 101 with
// the fifty-move rule in play), and which of the four maps it goes through: that of wins, losses,
// spoilt wins, saved losses. Written so that the compiler can work on many cells at once.
static std::uint16_t dtz_value(Cell cell) {
    const int plies = (cell & CELL_PLIES) - 1;
    const bool spoilt = plies >= FIFTY_MOVES;
    const int map = ((cell & CELL_LOSS) != 0 ? 1 : 0) + (spoilt ? 2 : 0);
    const int value = map << MAP_SHIFT | (spoilt ? plies - FIFTY_MOVES : plies);
    const bool free = (cell & CELL_ZEROES) != 0 || (cell & CELL_PLIES) == 0;
    return static_cast<std::uint16_t>(free || !is_legal(cell) ? UNUSED : value);
}

// Calls visit(cells) for the cells of a stream's indices in order, in batches. The cells lie all
// over memory: those of a batch are on their way at once.
template <typename Visit>
static void for_cells(const Part& part, const Candidate& candidate, std::uint64_t first,
                      std::uint64_t last, const Visit& visit, const Progress& progress = {}) {
    CellWalk walk = cells_from(part.table.layout, candidate.numbering, first);
    const Cell* const cells = part.cells[candidate.side].data();
    const auto first_cell = static_cast<std::uint32_t>(64 * part.first_word);
    CellBatch number;
    std::array<Cell, CELL_BATCH> cell;
    std::uint64_t reported = first;
    for (std::uint64_t index = first; index < last;) {
        const std::size_t count =
            std::min<std::uint64_t>(take_cells(walk, number, last - index), last - index);
        for (std::size_t i = 0; i < count; ++i)
            number[i] = static_cast<std::uint32_t>(place_of_cell(number[i] - first_cell));
        for (std::size_t i = 0; i < count; ++i)
            cell[i] = cells[number[i]];
        visit(std::span<const Cell>(cell).first(count));
        index += count;
        if (progress && index - reported >= BETWEEN_REPORTS) {
            reported = index;
            progress(ORDERED + (VALUES_MADE - ORDERED) * static_cast<double>(index) /
                                   static_cast<double>(last));
        }
    }
}

// The values that suit the indices of a WDL stream.
static void meet_choices(const Part& part, const Candidate& candidate, std::uint64_t first,
                         std::uint64_t last, WdlRuns& runs, const Progress& progress = {}) {
    std::array<WdlChoice, CELL_BATCH> choice;
    for_cells(
        part, candidate, first, last,
        [&](std::span<const Cell> cells) {
            for (std::size_t i = 0; i < cells.size(); ++i)
                choice[i] = wdl_choice(cells[i]);
            runs.meet(std::span<const WdlChoice>(choice).first(cells.size()));
        },
        progress);
    runs.close();
}

// Calls visit(values) for batches of what a DTZ stream holds before any map.
template <typename Visit>
static void for_dtz_values(const Part& part, const Candidate& candidate, std::uint64_t first,
                           std::uint64_t last, const Visit& visit, const Progress& progress = {}) {
    std::array<std::uint16_t, CELL_BATCH> value;
    for_cells(
        part, candidate, first, last,
        [&](std::span<const Cell> cells) {
            for (std::size_t i = 0; i < cells.size(); ++i)
                value[i] = dtz_value(cells[i]);
            visit(std::span<const std::uint16_t>(value).first(cells.size()));
        },
        progress);
}

static std::size_t runs_of(const Part& part, const Candidate& candidate, FileKind kind,
                           std::uint64_t first, std::uint64_t last) {
    WdlRuns wdl;
    if (kind == FileKind::WDL) {
        meet_choices(part, candidate, first, last, wdl);
        return wdl.runs;
    }
    std::size_t runs = 0;
    std::uint16_t current = UNUSED;
    for_dtz_values(part, candidate, first, last, [&](std::span<const std::uint16_t> values) {
        for (const std::uint16_t value : values) {
            if (value != UNUSED && value / 2 != current) {
                ++runs;
                current = value / 2;
            }
        }
    });
    return runs;
}

// The order of the men, and the side to move where there is a choice, with the fewest runs.
static Candidate choose_numbering(const Part& part, FileKind kind, std::span<const Side> sides) {
    std::vector<Candidate> candidates;
    for (const StreamOrder& order : possible_orders(part.table.layout.signature))
        for (const Side side : sides)
            candidates.push_back(
                {side, make_numbering(part.table.layout.signature, part.file_position, order)});
    // Each sample lies where those before it leave most room.
    constexpr double GOLDEN = 0.6180339887498949;
    double place = 0;
    for (double samples = FIRST_SAMPLES; candidates.size() > 1; samples *= MORE_SAMPLES) {
        for (int sample = 0; sample < samples; ++sample, place += GOLDEN) {
            for (Candidate& candidate : candidates) {
                const std::uint64_t positions = candidate.numbering.positions;
                const auto first = static_cast<std::uint64_t>((place - std::floor(place)) *
                                                              static_cast<double>(positions));
                candidate.runs += runs_of(part, candidate, kind, first,
                                          std::min(positions, first + SAMPLE_LENGTH));
            }
        }
        std::stable_sort(candidates.begin(), candidates.end(),
                         [](const auto& a, const auto& b) { return a.runs < b.runs; });
        candidates.erase(candidates.begin() + static_cast<long>((candidates.size() + 1) / 2),
                         candidates.end());
    }
    return candidates[0];
}

static CompressedStream compress_values(std::vector<ValueRun> values, int max_block_size_log2,
                                        const Progress& progress) {
    CompressionSettings settings;
    settings.max_block_size_log2 = max_block_size_log2;
    return compress(std::move(values), settings,
                    [&](double share) { progress(VALUES_MADE + (1 - VALUES_MADE) * share); });
}

static FileStream make_wdl_stream(const Part& part, Side side, const Progress& progress) {
    const Candidate chosen = choose_numbering(part, FileKind::WDL, {&side, 1});
    std::vector<ValueRun> values;
    WdlRuns runs;
    runs.values = &values;
    meet_choices(part, chosen, 0, chosen.numbering.positions, runs, progress);
    return {chosen.numbering.order,
            compress_values(std::move(values), WDL_BLOCK_SIZE_LOG2, progress)};
}

// Turns raw values into what is stored: moves, or plies where the loss of one would move a distance
// across the fifty-move line; through maps if they help. Each map lists its values from the most
// frequent down, so that wins and losses share small numbers.
static void make_maps(std::vector<ValueRun>& values, FilePosition& position) {
    using Counts = std::array<std::size_t, VALUE_MASK + 1>;
    const auto count_values = [&] {
        auto counts = std::make_unique<std::array<Counts, 4>>();
        for (const auto& [value, length] : values)
            (*counts)[value >> MAP_SHIFT][value & VALUE_MASK] += length;
        return counts;
    };
    const auto plies = count_values();
    for (std::size_t map = 0; map < 2; ++map)
        if ((*plies)[map][FIFTY_MOVES - 1] != 0)
            position.flags |= map == 0 ? DTZ_WINS_IN_PLIES : DTZ_LOSSES_IN_PLIES;
    for (ValueRun& run : values) {
        const int map = run.value >> MAP_SHIFT;
        const bool in_plies = (map == 0 && (position.flags & DTZ_WINS_IN_PLIES) != 0) ||
                              (map == 1 && (position.flags & DTZ_LOSSES_IN_PLIES) != 0);
        if (!in_plies)
            run.value = static_cast<std::uint16_t>(map << MAP_SHIFT | (run.value & VALUE_MASK) / 2);
    }
    const auto counts = count_values();
    std::array<std::vector<std::uint16_t>, 4> number;
    for (std::size_t map = 0; map < 4; ++map) {
        std::vector<std::uint16_t>& list = position.maps[map];
        for (std::uint16_t value = 0; value <= VALUE_MASK; ++value)
            if ((*counts)[map][value] != 0)
                list.push_back(value);
        std::stable_sort(list.begin(), list.end(), [&](std::uint16_t a, std::uint16_t b) {
            return (*counts)[map][a] > (*counts)[map][b];
        });
        number[map].resize(VALUE_MASK + 1);
        for (std::size_t i = 0; i < list.size(); ++i)
            number[map][list[i]] = static_cast<std::uint16_t>(i);
    }
    // Values of one kind need no map.
    const bool mapped = std::count_if(position.maps.begin(), position.maps.end(),
                                      [](const auto& map) { return !map.empty(); }) > 1;
    std::size_t runs = 0;
    for (const auto& [raw, length] : values) {
        const auto value = static_cast<std::uint16_t>(raw & VALUE_MASK);
        const std::uint16_t stored = mapped ? number[raw >> MAP_SHIFT][value] : value;
        // Different distances may have become the same value.
        if (runs > 0 && values[runs - 1].value == stored &&
            values[runs - 1].length + length <= MAX_RUN_LENGTH)
            values[runs - 1].length = static_cast<std::uint16_t>(values[runs - 1].length + length);
        else
            values[runs++] = {stored, length};
    }
    values.resize(runs);
    if (!mapped) {
        position.maps = {};
        return;
    }
    position.flags |= DTZ_MAPPED;
    for (const std::vector<std::uint16_t>& map : position.maps)
        if (map.size() > 255 || std::any_of(map.begin(), map.end(), [](auto v) { return v > 255; }))
            position.flags |= DTZ_WIDE_MAPS;
}

// The raw values of a stream. Where no reader looks, the run before goes on.
static std::vector<ValueRun> dtz_runs(const Part& part, const Candidate& candidate,
                                      const Progress& progress) {
    std::vector<ValueRun> runs;
    std::uint16_t current = UNUSED;
    std::size_t length = 0;
    for_dtz_values(
        part, candidate, 0, candidate.numbering.positions,
        [&](std::span<const std::uint16_t> values) {
            for (const std::uint16_t value : values) {
                if (value != UNUSED && value != current) {
                    if (current != UNUSED) {
                        append_values(runs, current, length);
                        length = 0;
                    }
                    current = value;
                }
                ++length;
            }
        },
        progress);
    append_values(runs, current != UNUSED ? current : std::uint16_t{0}, length);
    return runs;
}

static FilePosition make_dtz_position(const Part& part, const Progress& progress) {
    // A reader finds the other side by a search of one ply: the one that is likely to be smaller
    // will do.
    constexpr std::array<Side, 2> both = {WHITE, BLACK};
    const std::size_t sides = is_symmetric(part.table.layout.signature) ? 1 : 2;
    const Candidate chosen = choose_numbering(part, FileKind::DTZ, std::span(both).first(sides));
    std::vector<ValueRun> values = dtz_runs(part, chosen, progress);
    FilePosition position;
    position.flags = chosen.side == BLACK ? DTZ_BLACK_TO_MOVE : 0;
    make_maps(values, position);
    FileStream stream{chosen.numbering.order,
                      compress_values(std::move(values), DTZ_BLOCK_SIZE_LOG2, progress)};
    if (stream.data.constant && stream.data.constant_value != 0) {
        // A constant DTZ stream means 0: the map makes the value of it.
        const std::uint16_t value = stream.data.constant_value;
        stream.data.constant_value = 0;
        position.maps.fill({value});
        position.flags |= DTZ_MAPPED;
        position.flags |= value > 255 ? DTZ_WIDE_MAPS : 0;
    }
    position.streams = {std::move(stream)};
    return position;
}

TableFile empty_file(FileKind kind, const Signature& signature) {
    TableFile file;
    file.kind = kind;
    file.signature = signature;
    file.positions.resize(static_cast<std::size_t>(file_positions(signature)));
    return file;
}

void add_part(const Part& part, std::span<TableFile> files, int threads, const Progress& progress) {
    struct Task {
        TableFile& file;
        Side side;
    };
    std::vector<Task> tasks;
    const auto number = static_cast<std::size_t>(part.file_position);
    for (TableFile& file : files) {
        const bool both = file.kind == FileKind::WDL && !is_symmetric(file.signature);
        tasks.push_back({file, WHITE});
        if (both)
            tasks.push_back({file, BLACK});
        file.positions[number].streams.resize(both ? 2 : 1);
    }
    SharedProgress shares{progress, std::vector<double>(tasks.size()), {}};
    parallel_for(threads, tasks.size(), [&](std::size_t i) {
        const auto& [file, side] = tasks[i];
        FilePosition& position = file.positions[number];
        const Progress report = progress_of_piece(shares, i);
        if (file.kind == FileKind::WDL)
            position.streams[side] = make_wdl_stream(part, side, report);
        else
            position = make_dtz_position(part, report);
        report(1);
    });
}

} // namespace brindlemoth::tablegen
