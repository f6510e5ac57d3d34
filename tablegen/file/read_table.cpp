#include "file/read_table.h"

#include "numbering/cell_walk.h"
#include "solver/zeroing_moves.h"
#include "system/parallel.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace brindlemoth::tablegen {

// The share of reading in the work; the rest is to complete the values.
constexpr double READING = 0.6;

// Puts the values of a stream, as they are decoded, to their positions.
static bool read_stream(const TableReader& reader, const ReaderStream& stream, Table& table,
                        Side side, Progress progress) {
    std::vector<WordValues>& words = table.values[side];
    CellWalk walk = cell_walk_from(table.layout, stream.numbering, 0);
    CellBatch cells;
    std::size_t batch = 0; // cells of the batch, and how many of them have their value
    std::size_t filled = 0;
    std::uint64_t done = 0;
    return read_values(reader, stream, [&](std::span<const std::uint16_t> values) {
        for (const std::uint16_t value : values) {
            if (filled == batch) {
                batch = take_cells(walk, cells);
                filled = 0;
                for (std::size_t i = 0; i < batch; ++i)
                    __builtin_prefetch(&words[cells[i] / 64], 1);
            }
            const std::size_t cell = cells[filled++];
            const unsigned code = value + 1U; // as in WordValues
            const std::size_t king = cell % 64;
            // The other image may have been there before, with another value that does as well.
            WordValues& word = words[cell / 64];
            for (std::size_t k = 0; k < word.size(); ++k)
                word[k] = (word[k] & ~(Squares{1} << king)) | Squares{code >> k & 1} << king;
        }
        done += values.size();
        progress.report(static_cast<double>(done) /
                        static_cast<double>(stream.numbering.positions));
    });
}

// Calls visit() for each order of like men from `slot` on, other than the black king. Pawns are a
// set already.
template <typename Visit>
static void for_orders(const Layout& layout, Placement& placement, std::size_t slot,
                       const Visit& visit) {
    if (slot + 1 >= layout.men) {
        visit();
        return;
    }
    for (std::size_t other = slot;
         layout.kind[other] == layout.kind[slot] && layout.side[other] == layout.side[slot];
         ++other) {
        std::swap(placement[slot], placement[other]);
        for_orders(layout, placement, slot + 1, visit);
        std::swap(placement[slot], placement[other]);
    }
}

// Whether the board has the same pawns when it is mirrored.
static bool pawns_mirror(const Layout& layout, const Placement& placement) {
    std::array<Squares, 2> pawns{};
    for (std::size_t slot = 0; slot < layout.pawns; ++slot)
        pawns[layout.side[slot]] |= bit(placement[slot]);
    return std::all_of(pawns.begin(), pawns.end(),
                       [](Squares side) { return reflect_all(LEFT_RIGHT, side) == side; });
}

// Takes values of another word, whose board is reflected, where there are none yet.
static void add_values(Table& table, std::size_t word, std::size_t other, Reflection reflection) {
    for (std::vector<WordValues>& values : table.values) {
        WordValues& own = values[word];
        const Squares missing = ~(own[0] | own[1] | own[2]);
        for (std::size_t i = 0; i < own.size(); ++i)
            own[i] |= missing & reflect_all_back(reflection, values[other][i]);
    }
}

// Gives what has no value that of the same position: with like men exchanged, or in the other image
// that the folding leaves. Where several have one, each keeps its own.
static void share_values(Table& table) {
    const Layout& layout = table.layout;
    const Reflection reflection = layout.pawns == 0 ? DIAGONAL : LEFT_RIGHT;
    for (std::size_t word = 0; word < words_of(layout); ++word) {
        Placement placement = placement_of(layout, word);
        // With the white king on the diagonal, or pawns on either side alike, there is an image.
        const bool mirrors = layout.pawns == 0 ? placement[0] % 8 == placement[0] / 8
                                               : pawns_mirror(layout, placement);
        for_orders(layout, placement, layout.pawns, [&] {
            add_values(table, word, word_of(layout, placement).word, 0);
            Placement image = placement;
            for (std::size_t slot = layout.pawns; mirrors && slot < layout.men; ++slot)
                image[slot] = reflect(reflection, placement[slot]);
            if (mirrors)
                add_values(table, word, word_of(layout, image).word, reflection);
        });
    }
}

// Raises each value to that of the best capture.
static void complete_values(Table& table, int threads) {
    for_range(threads, words_of(table.layout), [&](std::size_t word) {
        const Placement placement = placement_of(table.layout, word);
        for (const Side side : {WHITE, BLACK}) {
            const Squares legal = legal_squares(table.layout, placement, side);
            AtLeast values = unpack(table.values[side][word]);
            const AtLeast captures = legal != 0 ? best_captures(table, placement, side) : AtLeast{};
            for (std::size_t value = 0; value < values.size(); ++value)
                values[value] = (values[value] | captures[value]) & legal;
            table.values[side][word] = pack(values);
        }
    });
}

std::unique_ptr<Table> read_table(const TableReader& reader, TableSet& tables, int threads,
                                  Progress progress) {
    std::unique_ptr<Table> table = prepare_table(reader.signature, tables);
    std::atomic<bool> whole{true};
    std::vector<Progress> pieces = progress.parts(reader.streams.size(), READING);
    parallel_for(threads, reader.streams.size(), [&](std::size_t i) {
        const Side side = i % reader.sides == 0 ? WHITE : BLACK;
        if (!read_stream(reader, reader.streams[i], *table, side, std::move(pieces[i])))
            whole = false;
    });
    if (!whole)
        return nullptr;
    share_values(*table);
    if (is_symmetric(reader.signature))
        table->values[BLACK] = exchange_colours(*table)->values[BLACK];
    complete_values(*table, threads);
    return table;
}

} // namespace brindlemoth::tablegen
