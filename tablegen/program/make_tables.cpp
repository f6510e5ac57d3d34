// Makes the tables that the command line names, each after those that it converts into.
#include "file/table_maker.h"
#include "file/table_reader.h"
#include "program/progress_line.h"
#include "program/tasks.h"
#include "system/system.h"
#include "table_cache.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <set>
#include <stdexcept>
#include <system_error>

namespace brindlemoth::tablegen {

// The files of a signature that are not there, or not whole.
static std::vector<FileKind> missing_files(TableCache& cache, const Signature& signature) {
    std::vector<FileKind> missing;
    for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
        TableReader reader;
        if (!open_table(table_path(cache.directory, signature, kind), signature, kind, reader)
                 .empty())
            missing.push_back(kind);
        else if (kind == FileKind::WDL && reader.own)
            cache.trusted.insert(name_of(signature));
    }
    return missing;
}

// Checks that files can be made in the directory, before hours of work.
// Throws std::runtime_error if not.
static void prepare_directory(const std::string& directory) {
    std::error_code error;
    std::filesystem::create_directories(path_of(directory), error);
    if (error)
        throw std::runtime_error("cannot make directory " + directory + ": " + error.message());
    const std::string path = temporary_name((path_of(directory) / "try").string());
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        throw std::runtime_error("cannot write to " + directory + ": " + std::strerror(errno));
    std::fclose(file);
    std::remove(path.c_str());
}

namespace {

// What a run has done so far.
struct Summary {
    std::size_t made = 0;
    std::size_t skipped = 0;
    std::uintmax_t bytes = 0;
};

// Tells other runs on the directory that a table is being made, by a file of its temporary name.
struct Claim {
    std::string path;

    explicit Claim(const std::string& table) : path(temporary_name(table)) {
        if (std::FILE* const file = std::fopen(path.c_str(), "wb"))
            std::fclose(file);
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim() { std::remove(path.c_str()); } // if it has not become the table
};

} // namespace

// The tables that other runs are making, or were making when they were killed.
static std::set<std::string> claimed_tables(const std::string& directory) {
    const std::string own = temporary_name("");
    std::set<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(path_of(directory), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string file = entry->path().filename().string();
        if (file.ends_with(".tmp") && !file.ends_with(own))
            names.insert(file.substr(0, file.find('.')));
    }
    return names;
}

// The table to make next: the first that no other run is making and whose conversions are made,
// or the first of all if there is none.
static std::size_t choose_table(const std::vector<Signature>& to_come,
                                const std::string& directory) {
    const std::set<std::string> claimed = claimed_tables(directory);
    const auto is_to_come = [&](const Signature& signature) {
        return std::find(to_come.begin(), to_come.end(), signature) != to_come.end();
    };
    for (std::size_t i = 0; i < to_come.size(); ++i) {
        const std::vector<Signature> needed = conversions(to_come[i]);
        if (!claimed.contains(name_of(to_come[i])) &&
            std::none_of(needed.begin(), needed.end(), is_to_come))
            return i;
    }
    return 0;
}

// Makes files of a table. Returns their sizes as a text.
static std::string make_files(TableCache& cache, const Signature& signature,
                              const std::vector<FileKind>& kinds, Progress progress,
                              Summary& summary) {
    std::vector<TableFile> files;
    files.reserve(kinds.size());
    for (const FileKind kind : kinds)
        files.push_back(empty_file(kind, signature));
    solve_from(
        cache, signature,
        [&](const Part& part, int threads, Progress making) {
            add_part(part, files, threads, std::move(making));
        },
        std::move(progress));
    std::string sizes;
    for (const TableFile& file : files) {
        const std::vector<std::uint8_t> bytes = lay_out(file);
        write_whole_file(table_path(cache.directory, signature, file.kind), bytes);
        sizes += (sizes.empty() ? "" : " + ") + std::to_string(bytes.size());
        summary.bytes += bytes.size();
        if (file.kind == FileKind::WDL)
            cache.trusted.insert(name_of(signature));
    }
    ++summary.made;
    return sizes;
}

// The work of a table, and of reading back those that it converts into. What is read is added to
// `counted`; what is there already costs nothing again.
static double work_with_reading(const TableCache& cache, const Signature& signature,
                                std::set<std::string>& counted) {
    double work = work_of(signature);
    for (const Signature& needed : conversions(signature)) {
        const std::string name = name_of(needed);
        if (cache.trusted.contains(name) && !cache.tables.contains(name) &&
            counted.insert(name).second)
            work += reading_work_of(needed);
    }
    return work;
}

int make_tables(const CommandLine& line) {
    const auto seconds_since = [](std::chrono::steady_clock::time_point start) {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const auto start = std::chrono::steady_clock::now();
    TableCache cache{line.directory, line.threads, {}, {}};
    Summary summary;
    const auto skip = [&](const Signature& signature) {
        print_line(name_of(signature) + ": complete, skipped");
        ++summary.skipped;
    };
    std::vector<Signature> to_come;
    for (const Signature& signature : closure(line.wanted)) {
        if (men_of(signature) < 3)
            continue; // bare kings have no files
        if (missing_files(cache, signature).empty())
            skip(signature);
        else
            to_come.push_back(signature);
    }
    if (!to_come.empty())
        prepare_directory(line.directory);
    double total = 0;
    std::set<std::string> counted;
    for (const Signature& signature : to_come)
        total += work_with_reading(cache, signature, counted);
    ProgressLine progress = start_progress(total);
    counted.clear();
    while (!to_come.empty()) {
        const auto table_start = std::chrono::steady_clock::now();
        const auto next =
            to_come.begin() + static_cast<std::ptrdiff_t>(choose_table(to_come, line.directory));
        std::rotate(to_come.begin(), next, next + 1);
        const Signature signature = to_come[0];
        std::string name = name_of(signature);
        // Another run may have made it meanwhile.
        const std::vector<FileKind> kinds = missing_files(cache, signature);
        begin_table(progress, name, work_with_reading(cache, signature, counted));
        if (kinds.empty()) {
            skip(signature);
            to_come.erase(to_come.begin());
            continue;
        }
        const Claim claim(table_path(line.directory, signature, kinds[0]));
        make_room(cache, to_come);
        try {
            TotalProgress table_progress{[&](double done) { show_progress(progress, done); }};
            const std::string sizes =
                make_files(cache, signature, kinds, Progress(table_progress), summary);
            if (kinds.size() == 1)
                name += extension_of(kinds[0]);
            name += ": " + sizes + " bytes, " + duration_text(seconds_since(table_start));
            print_line(name);
        } catch (const std::bad_alloc&) {
            return complain("not enough memory for " + name);
        }
        to_come.erase(to_come.begin());
    }
    print_line(std::to_string(summary.made) + " tables made, " + std::to_string(summary.skipped) +
               " skipped, " + std::to_string(summary.bytes) + " bytes, " +
               duration_text(seconds_since(start)));
    return 0;
}

} // namespace brindlemoth::tablegen
