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

static FileStream make_stream(const NumberedSide& chosen, std::vector<ValueRun> values,
                              int max_block_size_log2, Progress progress) {
    CompressionSettings settings;
    settings.max_block_size_log2 = max_block_size_log2;
    return {chosen.numbering.order, compress(std::move(values), settings, std::move(progress))};
}

static FileStream make_wdl_stream(const Part& part, Side side, Progress progress) {
    const NumberedSide chosen = choose_numbering(
        part.table.layout.signature, part.file_position, {&side, 1},
        [&](const auto& stream, auto... range) { return count_wdl_runs(part, stream, range...); });
    std::vector<ValueRun> values = wdl_runs(part, chosen, progress.part(VALUES_MADE));
    return make_stream(chosen, std::move(values), WDL_BLOCK_SIZE_LOG2, std::move(progress));
}

static FilePosition make_dtz_position(const Part& part, Progress progress) {
    // A reader finds the value of the other side by a search of one ply, so the side that is likely
    // to compress better is stored.
    constexpr std::array<Side, 2> both = {WHITE, BLACK};
    const Signature& signature = part.table.layout.signature;
    const NumberedSide chosen = choose_numbering(
        signature, part.file_position, std::span(both).first(is_symmetric(signature) ? 1 : 2),
        [&](const auto& stream, auto... range) { return count_dtz_runs(part, stream, range...); });
    std::vector<ValueRun> values = raw_dtz_runs(part, chosen, progress.part(VALUES_MADE));
    FilePosition position;
    position.flags = chosen.side == BLACK ? DTZ_BLACK_TO_MOVE : 0;
    map_dtz_values(values, position);
    position.streams = {
        make_stream(chosen, std::move(values), DTZ_BLOCK_SIZE_LOG2, std::move(progress))};
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

void add_part(const Part& part, std::span<TableFile> files, int threads, Progress progress) {
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
    std::vector<Progress> pieces = progress.parts(tasks.size());
    parallel_for(threads, tasks.size(), [&](std::size_t i) {
        const auto& [file, side] = tasks[i];
        FilePosition& position = file.positions[number];
        if (file.kind == FileKind::WDL)
            position.streams[side] = make_wdl_stream(part, side, std::move(pieces[i]));
        else
            position = make_dtz_position(part, std::move(pieces[i]));
    });
}

} // namespace brindlemoth::tablegen
