// Makes the tables that the command line names, each after those that it converts into.
#include "progress_line.h"
#include "tasks.h"
#include "verify/table_reader.h"
#include "writer/table_maker.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace brindlemoth::tablegen {

namespace {

// One table of the plan.
struct Job {
    Signature signature;
    bool write = false;        // its files are not there, or not whole
    bool solve = false;        // it is written, or something solved converts into it
    std::size_t last_user = 0; // the last job that looks positions up in this table
};

} // namespace

std::string table_path(const std::string& directory, const Signature& signature, bool dtz) {
    const std::filesystem::path path(directory);
    return (path / (name_of(signature) + (dtz ? DTZ_EXTENSION : WDL_EXTENSION))).string();
}

static bool is_whole(const std::string& path, const Signature& signature, bool dtz) {
    TableReader reader;
    return open_table(path, signature, dtz, reader).empty();
}

static std::vector<Job> plan(const CommandLine& line) {
    std::vector<Job> jobs;
    for (const Signature& signature : closure(line.wanted)) {
        const bool bare_kings = men_of(signature) == 2;
        const bool whole =
            bare_kings ||
            (is_whole(table_path(line.directory, signature, false), signature, false) &&
             is_whole(table_path(line.directory, signature, true), signature, true));
        jobs.push_back({signature, !whole, !whole, jobs.size()});
    }
    // From the last job back: who is solved needs what it converts into.
    for (std::size_t i = jobs.size(); i-- > 0;) {
        if (!jobs[i].solve)
            continue;
        for (const Signature& needed : conversions(jobs[i].signature)) {
            const auto job = std::find_if(jobs.begin(), jobs.end(), [&](const Job& other) {
                return other.signature == needed;
            });
            job->solve = true;
            job->last_user = std::max(job->last_user, i);
        }
    }
    return jobs;
}

// The work that a table takes, roughly: solving looks at each cell, writing at each index.
static double work_of(const Job& job) {
    const auto cells = static_cast<double>(cells_of(make_layout(job.signature)));
    return !job.solve ? 0 : job.write ? 2 * cells : cells;
}

// Makes and writes one of the two files. Returns what went wrong, if anything.
static std::string write_file(const std::string& directory, const TableFile& file,
                              std::size_t& bytes_written) {
    const std::vector<std::uint8_t> bytes = lay_out(file);
    bytes_written = bytes.size();
    return write_whole_file(table_path(directory, file.signature, file.kind == FileKind::DTZ),
                            bytes);
}

// Whether files can be made in the directory: better known before hours of work than after.
static std::string try_directory(const std::string& directory) {
    const std::string path = (std::filesystem::path(directory) / "tablegen.tmp").string();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return "cannot write to " + directory + ": " + std::strerror(errno);
    std::fclose(file);
    std::remove(path.c_str());
    return "";
}

int make_tables(const CommandLine& line) {
    std::error_code error;
    std::filesystem::create_directories(line.directory, error);
    if (error)
        return complain("cannot make directory " + line.directory + ": " + error.message());
    if (const std::string failure = try_directory(line.directory); !failure.empty())
        return complain(failure);
    const std::vector<Job> jobs = plan(line);
    double total = 0;
    for (const Job& job : jobs)
        total += work_of(job);
    ProgressLine progress = start_progress(total);
    TableSet tables;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const Job& job = jobs[i];
        const std::string name = name_of(job.signature);
        if (!job.solve) {
            if (men_of(job.signature) > 2)
                finish_table(name + ": there and whole");
            continue;
        }
        const auto start = std::chrono::steady_clock::now();
        begin_table(progress, name, work_of(job));
        // A written table's share: solving half, the two files a quarter each.
        const double solving = job.write ? 0.5 : 1;
        Table& table = solve(job.signature, tables, line.threads,
                             [&](double done) { show_progress(progress, solving * done); });
        if (job.write) {
            std::size_t wdl_bytes = 0;
            std::size_t dtz_bytes = 0;
            std::string failure = write_file(
                line.directory,
                make_wdl_file(table, line.threads,
                              [&](double done) { show_progress(progress, 0.5 + 0.25 * done); }),
                wdl_bytes);
            if (failure.empty()) {
                failure = write_file(line.directory,
                                     make_dtz_file(table, line.threads,
                                                   [&](double done) {
                                                       show_progress(progress, 0.75 + 0.25 * done);
                                                   }),
                                     dtz_bytes);
            }
            if (!failure.empty())
                return complain(failure);
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
            char text[128];
            std::snprintf(text, sizeof text, "%s: %zu + %zu bytes, %.1f s", name.c_str(), wdl_bytes,
                          dtz_bytes, taken.count());
            finish_table(text);
        }
        drop_distances(table);
        for (std::size_t earlier = 0; earlier <= i; ++earlier)
            if (jobs[earlier].last_user <= i)
                tables.erase(name_of(jobs[earlier].signature));
    }
    return 0;
}

} // namespace brindlemoth::tablegen
