#include "file/table_maker.h"

#include "file/dtz_maps.h"
#include "file/stream_values.h"
#include "system/parallel.h"

#include <array>
#include <utility>

namespace brindlemoth::tablegen {

// Readers decode half a block on average: WDL probes happen in the middle of a search.
constexpr int WDL_BLOCK_SIZE_LOG2 = 6;
constexpr int DTZ_BLOCK_SIZE_LOG2 = 10;

// Estimated share of the work on a stream that is done when its values are there.
constexpr double VALUES_MADE = 0.6;

static Progress values_progress(const Progress& progress) {
    return [&](double share) { progress(VALUES_MADE * share); };
}

static FileStream make_stream(const NumberedSide& chosen, std::vector<ValueRun> values,
                              int max_block_size_log2, const Progress& progress) {
    CompressionSettings settings;
    settings.max_block_size_log2 = max_block_size_log2;
    return {chosen.numbering.order, compress(std::move(values), settings, [&](double share) {
                progress(VALUES_MADE + (1 - VALUES_MADE) * share);
            })};
}

static FileStream make_wdl_stream(const Part& part, Side side, const Progress& progress) {
    const NumberedSide chosen = choose_numbering(
        part.table.layout.signature, part.file_position, {&side, 1},
        [&](const auto& stream, auto... range) { return count_wdl_runs(part, stream, range...); });
    return make_stream(chosen, wdl_runs(part, chosen, values_progress(progress)),
                       WDL_BLOCK_SIZE_LOG2, progress);
}

static FilePosition make_dtz_position(const Part& part, const Progress& progress) {
    // A reader finds the value of the other side by a search of one ply, so the side that is likely
    // to compress better is stored.
    constexpr std::array<Side, 2> both = {WHITE, BLACK};
    const Signature& signature = part.table.layout.signature;
    const NumberedSide chosen = choose_numbering(
        signature, part.file_position, std::span(both).first(is_symmetric(signature) ? 1 : 2),
        [&](const auto& stream, auto... range) { return count_dtz_runs(part, stream, range...); });
    std::vector<ValueRun> values = raw_dtz_runs(part, chosen, values_progress(progress));
    FilePosition position;
    position.flags = chosen.side == BLACK ? DTZ_BLACK_TO_MOVE : 0;
    map_dtz_values(values, position);
    position.streams = {make_stream(chosen, std::move(values), DTZ_BLOCK_SIZE_LOG2, progress)};
    map_constant_dtz(position.streams[0].data, position);
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
