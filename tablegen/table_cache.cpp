#include "table_cache.h"

#include "file/read_table.h"

#include <utility>

namespace brindlemoth::tablegen {

// Tables that are needed later stay in memory up to this size, together with those needed next.
constexpr std::size_t KEPT_BYTES = std::size_t{1} << 30;

double work_of(const Signature& signature) {
    return static_cast<double>(words_of(make_layout(signature)));
}

double reading_work_of(const Signature& signature) {
    constexpr double READING = 0.4; // of the time that making takes
    return READING * work_of(signature);
}

// Reads back or solves those of the needed tables that are not in memory. Returns the piece of the
// progress for the work `own`, which comes after it.
static Progress provide_tables(TableCache& cache, std::vector<Signature> needed, double own,
                               Progress& progress) {
    const auto work_for = [&](const Signature& table) {
        return cache.trusted.contains(name_of(table)) ? reading_work_of(table) : work_of(table);
    };
    std::erase_if(needed, [&](const auto& table) { return cache.tables.contains(name_of(table)); });
    double total = own;
    for (const Signature& table : needed)
        total += work_for(table);
    for (const Signature& table : needed) {
        Progress piece = progress.part(work_for(table) / total);
        // It may have been solved or read on the way to another.
        if (!cache.tables.contains(name_of(table)) && !read_back(cache, table, piece))
            solve_from(cache, table, {}, std::move(piece));
    }
    return progress.part(own / total);
}

bool read_back(TableCache& cache, const Signature& signature, Progress& progress) {
    const std::string name = name_of(signature);
    TableReader reader;
    if (!cache.trusted.contains(name) ||
        !open_table(table_path(cache.directory, signature, FileKind::WDL), signature, FileKind::WDL,
                    reader)
             .empty())
        return false;
    std::vector<Signature> captures = conversions(signature);
    std::erase_if(captures, [&](const auto& next) { return men_of(next) == men_of(signature); });
    Progress reading =
        provide_tables(cache, std::move(captures), reading_work_of(signature), progress);
    std::unique_ptr<Table> table =
        read_table(reader, cache.tables, cache.threads, std::move(reading));
    if (table == nullptr)
        return false;
    cache.tables[name] = std::move(table);
    return true;
}

void solve_from(TableCache& cache, const Signature& signature, const VisitPart& visit,
                Progress progress) {
    Progress solving = provide_tables(cache, conversions(signature), work_of(signature), progress);
    solve(signature, cache.tables, cache.threads, visit, std::move(solving));
}

void make_room(TableCache& cache, std::span<const Signature> to_come) {
    std::set<std::string> kept;
    std::size_t bytes = 0;
    for (const Signature& signature : to_come) {
        for (const Signature& needed : conversions(signature)) {
            for (const std::string& name : {name_of(needed), name_of(exchange_sides(needed))}) {
                const auto found = cache.tables.find(name);
                if (found == cache.tables.end() || (bytes > KEPT_BYTES && signature != to_come[0]))
                    continue;
                if (kept.insert(name).second)
                    bytes += 2 * sizeof(WordValues) * found->second->values[WHITE].size();
            }
        }
    }
    std::erase_if(cache.tables, [&](const auto& table) { return !kept.contains(table.first); });
}

} // namespace brindlemoth::tablegen
