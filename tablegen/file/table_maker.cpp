#include "file/table_maker.h"

#include "system/parallel.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <map>
#include <mutex>
#include <numeric>
#include <utility>

namespace brindlemoth::tablegen {

// Readers decode half a block on average: WDL probes happen in the middle of a search.
constexpr int WDL_BLOCK_SIZE_LOG2 = 6;
constexpr int DTZ_BLOCK_SIZE_LOG2 = 10;

// Orders of men are compared on some stretches of neighbouring indices: this many of them in all
// orders together, within bounds for each order.
constexpr std::size_t SAMPLES_IN_ALL = 2400;
constexpr std::size_t MIN_SAMPLES = 12;
constexpr std::size_t MAX_SAMPLES = 48;
constexpr std::uint64_t SAMPLE_LENGTH = 1024;

// Shares of the work on a stream, about, when its order is chosen and when its values are made.
constexpr double ORDERED = 0.2;
constexpr double VALUES_MADE = 0.6;
constexpr std::uint64_t BETWEEN_REPORTS = 1 << 18;

// In a sequence of DTZ values: no reader looks here.
constexpr std::uint16_t UNUSED = 0xFFFF;

WdlChoice wdl_choice(const Table& table, const Placement& placement, Side side) {
    const int distance = table.distance[side][cell_of(table.layout, placement)];
    if (distance == ILLEGAL_DISTANCE)
        return ANY_WDL;
    const int wdl = wdl_of_distance(distance);
    const int capture = best_capture(table, placement, side);
    if (capture == 2)
        return ANY_WDL;
    const int own = 1 << (wdl + 2);
    return static_cast<WdlChoice>(capture == wdl ? 2 * own - 1 : own);
}

bool dtz_matters(const Table& table, const Placement& placement, Side side) {
    const int distance = table.distance[side][cell_of(table.layout, placement)];
    if (distance == ILLEGAL_DISTANCE || distance == 0)
        return false;
    const int wdl = wdl_of_distance(distance);
    if (wdl < 0)
        return true;
    const ZeroingMoves zeroing = zeroing_moves(table, placement, side);
    return zeroing.best_capture != wdl && zeroing.best_pawn_move != wdl;
}

namespace {

// One stream on its way: which position each of its indices is.
struct Source {
    const Table& table;
    Side side;
    Numbering numbering;
    std::array<std::uint8_t, MAX_FILE_MEN> slot{}; // of each man in the stream's order

    Source(const Table& solved, Side to_move, int file_position, const StreamOrder& order)
        : table(solved), side(to_move),
          numbering(make_numbering(solved.layout.signature, file_position, order)) {
        std::array<bool, 8> used{};
        for (std::size_t man = 0; man < numbering.men; ++man) {
            const std::uint8_t piece = order.piece[man];
            std::size_t next = 0;
            while (used[next] || solved.layout.kind[next] != kind_of(piece) ||
                   solved.layout.side[next] != side_of(piece))
                ++next;
            used[next] = true;
            slot[man] = static_cast<std::uint8_t>(next);
        }
    }
    Placement placement(std::uint64_t index) const {
        const FileSquares squares = squares_at(numbering, index);
        Placement result{};
        for (std::size_t man = 0; man < numbering.men; ++man)
            result[slot[man]] = squares[man];
        return result;
    }
};

// Meets the WDL choices in order and settles on values in as few runs as can be: a run goes on
// as long as one value suits all its positions.
struct WdlRuns {
    std::vector<std::uint16_t>* values = nullptr; // filled if given
    std::size_t runs = 0;
    std::size_t length = 0;
    WdlChoice common = ANY_WDL;

    void meet(WdlChoice choice) {
        if ((common & choice) == 0) {
            close();
            common = choice;
        } else {
            common &= choice;
        }
        ++length;
    }
    void close() {
        if (length != 0) {
            ++runs;
            if (values != nullptr) {
                // The draw is the most likely value around, then the loss and the win.
                const int value = (common & 4) != 0 ? 2 : std::countr_zero(common);
                values->insert(values->end(), length, static_cast<std::uint16_t>(value));
            }
        }
        length = 0;
    }
};

} // namespace

// How many plies a value adds to the least of its kind (1, or 101 with the fifty-move rule in
// play).
static int plies_beyond_first(int distance) {
    const int size = std::abs(distance);
    return size > 100 ? size - 101 : size - 1;
}

// Which of the four maps a value goes through: wins, losses, spoilt wins, spoilt losses.
static std::size_t map_of(int distance) {
    return (distance < 0 ? 1U : 0U) + (std::abs(distance) > 100 ? 2U : 0U);
}

// What is stored for a position before any map: the map's number and moves to the zeroing move.
static std::uint16_t dtz_value(const Source& source, std::uint64_t index) {
    const Placement placement = source.placement(index);
    if (!dtz_matters(source.table, placement, source.side))
        return UNUSED;
    const int distance =
        source.table.distance[source.side][cell_of(source.table.layout, placement)];
    const int moves = plies_beyond_first(distance) / 2;
    return static_cast<std::uint16_t>(map_of(distance) << 12 | static_cast<std::size_t>(moves));
}

// Counts the runs of like values over sample stretches, for one order of the men.
template <typename Count>
static std::size_t sample_runs(const Source& source, std::size_t wanted, const Count& count) {
    const std::uint64_t positions = source.numbering.positions;
    std::size_t runs = 0;
    const std::uint64_t samples = std::min<std::uint64_t>(wanted, 1 + positions / SAMPLE_LENGTH);
    for (std::uint64_t i = 0; i < samples; ++i) {
        const std::uint64_t first = i * (positions / samples);
        runs += count(first, std::min(positions, first + SAMPLE_LENGTH));
    }
    return runs;
}

static std::size_t sample_wdl_runs(const Source& source, std::size_t samples) {
    return sample_runs(source, samples, [&](std::uint64_t first, std::uint64_t last) {
        WdlRuns runs;
        for (std::uint64_t index = first; index < last; ++index)
            runs.meet(wdl_choice(source.table, source.placement(index), source.side));
        runs.close();
        return runs.runs;
    });
}

static std::size_t sample_dtz_runs(const Source& source, std::size_t samples) {
    return sample_runs(source, samples, [&](std::uint64_t first, std::uint64_t last) {
        std::size_t runs = 1;
        std::uint16_t current = UNUSED;
        for (std::uint64_t index = first; index < last; ++index) {
            const std::uint16_t value = dtz_value(source, index);
            if (value != UNUSED && value != current) {
                runs += current != UNUSED ? 1 : 0;
                current = value;
            }
        }
        return runs;
    });
}

// The order with the fewest runs.
template <typename Runs>
static StreamOrder choose_order(const Table& table, Side side, int file_position,
                                const Progress& report, const Runs& runs_of) {
    StreamOrder best;
    std::size_t fewest = SIZE_MAX;
    double tried = 0;
    const std::vector<StreamOrder> orders = possible_orders(table.layout.signature);
    const std::size_t samples =
        std::clamp(SAMPLES_IN_ALL / orders.size(), MIN_SAMPLES, MAX_SAMPLES);
    for (const StreamOrder& order : orders) {
        const std::size_t runs = runs_of(Source(table, side, file_position, order), samples);
        if (runs < fewest) {
            fewest = runs;
            best = order;
        }
        tried += 1;
        report(ORDERED * tried / static_cast<double>(orders.size()));
    }
    return best;
}

// Calls visit(index) for every index of the stream in order.
template <typename Visit>
static void for_indices(const Source& source, const Progress& report, const Visit& visit) {
    const std::uint64_t positions = source.numbering.positions;
    for (std::uint64_t index = 0; index < positions; ++index) {
        if (index % BETWEEN_REPORTS == 0) {
            const double share = static_cast<double>(index) / static_cast<double>(positions);
            report(ORDERED + (VALUES_MADE - ORDERED) * share);
        }
        visit(index);
    }
    report(VALUES_MADE);
}

static FileStream make_wdl_stream(const Table& table, Side side, int file_position,
                                  const Progress& report) {
    FileStream stream;
    stream.order = choose_order(table, side, file_position, report, sample_wdl_runs);
    const Source source(table, side, file_position, stream.order);
    std::vector<std::uint16_t> values;
    values.reserve(source.numbering.positions);
    WdlRuns runs;
    runs.values = &values;
    for_indices(source, report, [&](std::uint64_t index) {
        runs.meet(wdl_choice(table, source.placement(index), side));
    });
    runs.close();
    CompressionSettings settings;
    settings.max_block_size_log2 = WDL_BLOCK_SIZE_LOG2;
    stream.data = compress(std::move(values), settings);
    return stream;
}

// Turns raw values into what is stored, through maps if they help: each map lists its values from
// the most frequent down, so that wins and losses share small numbers.
static void make_maps(std::vector<std::uint16_t>& values, FilePosition& position) {
    std::array<std::map<std::uint16_t, std::size_t>, 4> counts;
    std::uint16_t greatest = 0;
    for (const std::uint16_t value : values) {
        if (value != UNUSED) {
            ++counts[value >> 12][value & 0xFFF];
            greatest = std::max<std::uint16_t>(greatest, value & 0xFFF);
        }
    }
    const auto kinds = std::count_if(counts.begin(), counts.end(),
                                     [](const auto& count) { return !count.empty(); });
    // Values of one kind that are all in use need no map, unless they are too big for a leaf.
    const bool mapped = kinds > 1;
    std::array<std::vector<std::uint16_t>, 4> number;
    for (std::size_t map = 0; map < 4; ++map) {
        std::vector<std::pair<std::size_t, std::uint16_t>> by_count;
        for (const auto& [value, count] : counts[map])
            by_count.emplace_back(count, value);
        std::stable_sort(by_count.begin(), by_count.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });
        number[map].resize(std::size_t{greatest} + 1);
        for (const auto& [count, value] : by_count) {
            number[map][value] = static_cast<std::uint16_t>(position.maps[map].size());
            position.maps[map].push_back(value);
        }
    }
    // Where no reader looks, the run before goes on.
    std::uint16_t current = UNUSED;
    for (std::uint16_t& value : values) {
        if (value != UNUSED) {
            const std::uint16_t plain = value & 0xFFF;
            current = mapped ? number[value >> 12][plain] : plain;
        }
        value = current;
    }
    const auto first_used =
        std::find_if(values.begin(), values.end(), [](auto value) { return value != UNUSED; });
    std::fill(values.begin(), first_used,
              first_used == values.end() ? std::uint16_t{0} : *first_used);
    if (!mapped) {
        position.maps = {};
        return;
    }
    position.flags |= DTZ_MAPPED;
    const bool wide = greatest > 255 || std::any_of(position.maps.begin(), position.maps.end(),
                                                    [](const auto& m) { return m.size() > 255; });
    position.flags |= wide ? DTZ_WIDE_MAPS : 0;
}

static FilePosition make_dtz_position(const Table& table, Side side, int file_position,
                                      const Progress& report) {
    FilePosition position;
    FileStream stream;
    stream.order = choose_order(table, side, file_position, report, sample_dtz_runs);
    const Source source(table, side, file_position, stream.order);
    std::vector<std::uint16_t> values(source.numbering.positions);
    for_indices(source, report,
                [&](std::uint64_t index) { values[index] = dtz_value(source, index); });
    position.flags = side == BLACK ? DTZ_BLACK_TO_MOVE : 0;
    make_maps(values, position);
    CompressionSettings settings;
    settings.max_block_size_log2 = DTZ_BLOCK_SIZE_LOG2;
    stream.data = compress(std::move(values), settings);
    if (stream.data.constant && stream.data.constant_value != 0) {
        // A constant DTZ stream means 0: the map makes the value of it.
        const std::uint16_t value = stream.data.constant_value;
        stream.data.constant_value = 0;
        position.maps.fill({value});
        position.flags |= DTZ_MAPPED;
        position.flags |= value > 255 ? DTZ_WIDE_MAPS : 0;
    }
    position.streams.push_back(std::move(stream));
    return position;
}

// Makes all streams of both sides to move, or of White alone where both sides have the same men.
// Calls make(side, file position, report) for each; it reports its share of the stream's work.
template <typename Make>
static void for_streams(const Table& table, int threads, const Progress& progress,
                        const Make& make) {
    const std::size_t sides = is_symmetric(table.layout.signature) ? 1 : 2;
    const auto files = static_cast<std::size_t>(file_positions(table.layout.signature));
    std::vector<double> done(sides * files);
    std::mutex reporting;
    parallel_for(threads, sides * files, [&](std::size_t i) {
        auto report = [&](double share) {
            const std::lock_guard<std::mutex> lock(reporting);
            done[i] = share;
            if (progress)
                progress(std::accumulate(done.begin(), done.end(), 0.0) /
                         static_cast<double>(done.size()));
        };
        make(i % sides == 0 ? WHITE : BLACK, static_cast<int>(i / sides), report);
        report(1);
    });
}

TableFile make_wdl_file(const Table& table, int threads, const Progress& progress) {
    TableFile file;
    file.kind = FileKind::WDL;
    file.signature = table.layout.signature;
    file.positions.resize(static_cast<std::size_t>(file_positions(file.signature)));
    for (FilePosition& position : file.positions)
        position.streams.resize(is_symmetric(file.signature) ? 1 : 2);
    for_streams(table, threads, progress,
                [&](Side side, int file_position, const Progress& report) {
                    file.positions[static_cast<std::size_t>(file_position)].streams[side] =
                        make_wdl_stream(table, side, file_position, report);
                });
    return file;
}

TableFile make_dtz_file(const Table& table, int threads, const Progress& progress) {
    TableFile file;
    file.kind = FileKind::DTZ;
    file.signature = table.layout.signature;
    const auto files = static_cast<std::size_t>(file_positions(file.signature));
    std::array<std::vector<FilePosition>, 2> made;
    made.fill(std::vector<FilePosition>(files));
    for_streams(table, threads, progress,
                [&](Side side, int file_position, const Progress& report) {
                    made[side][static_cast<std::size_t>(file_position)] =
                        make_dtz_position(table, side, file_position, report);
                });
    // A reader finds the other side by a search of one ply: the smaller file will do.
    std::array<std::size_t, 2> bytes{};
    for (const Side side : {WHITE, BLACK})
        for (const FilePosition& position : made[side])
            bytes[side] += position.streams.empty() ? 0 : stream_bytes(position.streams[0].data);
    const bool symmetric = is_symmetric(file.signature);
    file.positions = std::move(made[!symmetric && bytes[BLACK] < bytes[WHITE] ? BLACK : WHITE]);
    return file;
}

} // namespace brindlemoth::tablegen
