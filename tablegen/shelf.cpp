#include "shelf.h"

#include "file/table_reader.h"
#include "numbering/cell_walk.h"
#include "system/parallel.h"

#include <atomic>

namespace brindlemoth::tablegen {

// Tables that are needed later stay in memory up to this size, beside those that are needed next.
constexpr std::size_t KEPT_BYTES = std::size_t{1} << 30;

double work_of(const Signature& signature) {
    return static_cast<double>(words_of(make_layout(signature)));
}

// Sees to it that what a signature converts into is in memory: read back, or solved.
static void provide_conversions(Shelf& shelf, const Signature& signature, bool captures_only,
                                const Progress& progress) {
    for (const Signature& needed : conversions(signature)) {
        const bool wanted = !captures_only || men_of(needed) < men_of(signature);
        // Nobody knows how much of the work this is, but it is under way.
        const auto waiting = [&](double) { progress(0); };
        if (wanted && !shelf.tables.contains(name_of(needed)) && !read_back(shelf, needed, waiting))
            solve_from(shelf, needed, {}, waiting);
    }
}

bool read_back(Shelf& shelf, const Signature& signature, const Progress& progress) {
    const std::string name = name_of(signature);
    TableReader reader;
    if (!shelf.trusted.contains(name) ||
        !open_table(table_path(shelf.directory, signature, FileKind::WDL), signature, FileKind::WDL,
                    reader)
             .empty())
        return false;
    provide_conversions(shelf, signature, true, progress);
    std::unique_ptr<Table> table = make_table(signature, shelf.tables, FIFTY_MOVES, true);
    std::atomic<bool> whole{true};
    parallel_for(shelf.threads, reader.streams.size(), [&](std::size_t i) {
        const Side side = i % reader.sides == 0 ? WHITE : BLACK;
        CellWalk walk = cells_from(table->layout, reader.streams[i].numbering, 0);
        std::vector<std::size_t> cell;
        const auto set = [&](std::span<const std::uint16_t> values) {
            // The words lie all over memory: where they are is found out first.
            cell.resize(values.size());
            for (std::size_t& number : cell) {
                number = walk.cell;
                advance(walk);
            }
            for (std::size_t at = 0; at < values.size(); ++at) {
                const unsigned code = values[at] + 1U; // as in WordValues
                const std::size_t king = cell[at] % 64;
                WordValues& word = table->values[side][cell[at] / 64];
                // An image may have been there before, with another value that does as well.
                for (std::size_t k = 0; k < word.size(); ++k)
                    word[k] = (word[k] & ~(Squares{1} << king)) | Squares{code >> k & 1} << king;
            }
        };
        if (!read_values(reader, reader.streams[i], set))
            whole = false;
    });
    if (!whole)
        return false;
    share_values(*table);
    if (reader.sides == 1)
        table->values[BLACK] = exchange_colours(*table)->values[BLACK];
    complete_values(*table, shelf.threads);
    shelf.tables[name] = std::move(table);
    return true;
}

void solve_from(Shelf& shelf, const Signature& signature, const VisitPart& visit,
                const Progress& progress) {
    provide_conversions(shelf, signature, false, progress);
    solve(signature, shelf.tables, shelf.threads, visit, progress);
}

void make_room(Shelf& shelf, std::span<const Signature> to_come) {
    std::set<std::string> kept;
    std::size_t bytes = 0;
    for (const Signature& signature : to_come) {
        for (const Signature& needed : conversions(signature)) {
            for (const std::string& name : {name_of(needed), name_of(exchange_sides(needed))}) {
                const auto found = shelf.tables.find(name);
                if (found == shelf.tables.end() || (bytes > KEPT_BYTES && signature != to_come[0]))
                    continue;
                if (kept.insert(name).second)
                    bytes += 2 * sizeof(WordValues) * found->second->values[WHITE].size();
            }
        }
    }
    std::erase_if(shelf.tables, [&](const auto& table) { return !kept.contains(table.first); });
}

} // namespace brindlemoth::tablegen
