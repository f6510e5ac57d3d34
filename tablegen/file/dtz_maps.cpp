#include "file/dtz_maps.h"

#include "file/stream_values.h"

#include <algorithm>
#include <array>
#include <memory>

namespace brindlemoth::tablegen {

namespace {

constexpr std::size_t MAPS = 4;
constexpr std::uint16_t MAX_NARROW = 255; // greatest length and entry of a map of bytes

// How many positions have each value, by map.
using Counts = std::array<std::array<std::size_t, RAW_PLIES + 1>, MAPS>;

std::unique_ptr<Counts> count_values(const std::vector<ValueRun>& values) {
    auto counts = std::make_unique<Counts>();
    for (const auto& [value, length] : values)
        (*counts)[value >> MAP_SHIFT][value & RAW_PLIES] += length;
    return counts;
}

// Turns plies into moves. Wins stay in plies if one of them takes exactly 100, and so do losses:
// as a number of moves it would read as 99.
void store_moves(std::vector<ValueRun>& values, FilePosition& position) {
    const auto counts = count_values(values);
    std::array<bool, MAPS> in_plies{};
    for (std::size_t map = 0; map < 2; ++map) {
        in_plies[map] = (*counts)[map][FIFTY_MOVES - 1] != 0;
        if (in_plies[map])
            position.flags |= map == 0 ? DTZ_WINS_IN_PLIES : DTZ_LOSSES_IN_PLIES;
    }
    for (ValueRun& run : values) {
        const int map = run.value >> MAP_SHIFT;
        if (!in_plies[static_cast<std::size_t>(map)])
            run.value = static_cast<std::uint16_t>(map << MAP_SHIFT | (run.value & RAW_PLIES) / 2);
    }
}

// The values that occur, from the most frequent down.
std::vector<std::uint16_t> by_frequency(const std::array<std::size_t, RAW_PLIES + 1>& counts) {
    std::vector<std::uint16_t> list;
    for (std::uint16_t value = 0; value <= RAW_PLIES; ++value)
        if (counts[value] != 0)
            list.push_back(value);
    std::stable_sort(list.begin(), list.end(),
                     [&](std::uint16_t a, std::uint16_t b) { return counts[a] > counts[b]; });
    return list;
}

// Joins neighbours that have become equal.
void join_runs(std::vector<ValueRun>& values) {
    std::size_t runs = 0;
    for (const auto [value, length] : values) {
        if (runs > 0 && values[runs - 1].value == value &&
            values[runs - 1].length + length <= MAX_RUN_LENGTH)
            values[runs - 1].length = static_cast<std::uint16_t>(values[runs - 1].length + length);
        else
            values[runs++] = {value, length};
    }
    values.resize(runs);
}

} // namespace

void map_dtz_values(std::vector<ValueRun>& values, FilePosition& position) {
    store_moves(values, position);
    const auto counts = count_values(values);
    for (std::size_t map = 0; map < MAPS; ++map)
        position.maps[map] = by_frequency((*counts)[map]);
    // Values of one map need none.
    const bool mapped = std::count_if(position.maps.begin(), position.maps.end(),
                                      [](const auto& map) { return !map.empty(); }) > 1;
    // The counts are no longer needed: each becomes the place of its value in the map.
    for (std::size_t map = 0; map < MAPS; ++map)
        for (std::size_t i = 0; i < position.maps[map].size(); ++i)
            (*counts)[map][position.maps[map][i]] = i;
    for (ValueRun& run : values) {
        const auto value = static_cast<std::uint16_t>(run.value & RAW_PLIES);
        run.value =
            mapped ? static_cast<std::uint16_t>((*counts)[run.value >> MAP_SHIFT][value]) : value;
    }
    join_runs(values);
    if (!mapped) {
        position.maps = {};
        return;
    }
    position.flags |= DTZ_MAPPED;
    for (const std::vector<std::uint16_t>& map : position.maps)
        if (map.size() > MAX_NARROW ||
            std::any_of(map.begin(), map.end(), [](auto value) { return value > MAX_NARROW; }))
            position.flags |= DTZ_WIDE_MAPS;
}

void map_constant_dtz(CompressedStream& stream, FilePosition& position) {
    if (!stream.constant || stream.constant_value == 0)
        return;
    const std::uint16_t value = stream.constant_value;
    stream.constant_value = 0;
    position.maps.fill({value});
    position.flags |= DTZ_MAPPED;
    if (value > MAX_NARROW)
        position.flags |= DTZ_WIDE_MAPS;
}

} // namespace brindlemoth::tablegen
