// Makes the tables that the command line names, each after those that it converts into.
#include "file/table_maker.h"
#include "progress_line.h"
#include "tasks.h"
#include "verification/table_reader.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <span>
#include <system_error>

namespace brindlemoth::tablegen {

namespace {

// One table of the plan.
struct Job {
    Signature signature;
    // Whether its WDL file, or its DTZ file, is to be made: it is not there, or not whole. Files of
    // other makers beside it stay as they are.
    bool write_wdl = false;
    bool write_dtz = false;
    bool solve = false; // something is written, or something solved converts into it
};

} // namespace

std::string table_path(const std::string& directory, const Signature& signature, bool dtz) {
    const std::filesystem::path path(directory);
    return (path / (name_of(signature) + (dtz ? DTZ_EXTENSION : WDL_EXTENSION))).string();
}

static bool is_whole(const std::string& directory, const Signature& signature, bool dtz) {
    TableReader reader;
    return open_table(table_path(directory, signature, dtz), signature, dtz, reader).empty();
}

static std::vector<Job> plan(const CommandLine& line) {
    std::vector<Job> jobs;
    for (const Signature& signature : closure(line.wanted)) {
        Job job{signature};
        if (men_of(signature) > 2) {
            job.write_wdl = !is_whole(line.directory, signature, false);
            job.write_dtz = !is_whole(line.directory, signature, true);
        }
        job.solve = job.write_wdl || job.write_dtz;
        jobs.push_back(job);
    }
    // From the last job back: who is solved needs what it converts into.
    for (std::size_t i = jobs.size(); i-- > 0;) {
        if (!jobs[i].solve)
            continue;
        for (const Signature& needed : conversions(jobs[i].signature))
            std::find_if(jobs.begin(), jobs.end(), [&](const Job& other) {
                return other.signature == needed;
            })->solve = true;
    }
    return jobs;
}

// The work that a table takes, roughly: solving looks at each cell, writing at each index.
static double work_of(const Job& job) {
    const auto cells = static_cast<double>(cells_of(make_layout(job.signature)));
    const double files = (job.write_wdl ? 0.5 : 0) + (job.write_dtz ? 0.5 : 0);
    return job.solve ? (1 + files) * cells : 0;
}

// Whether files can be made in the directory: better known before hours of work than after.
// Returns what is wrong, if anything.
static std::string prepare_directory(const std::string& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error)
        return "cannot make directory " + directory + ": " + error.message();
    const std::string path = temporary_name((std::filesystem::path(directory) / "try").string());
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return "cannot write to " + directory + ": " + std::strerror(errno);
    std::fclose(file);
    std::remove(path.c_str());
    return "";
}

// Makes the files of a solved table that are wanted. Returns what went wrong, if anything.
static std::string write_files(const std::string& directory, const Job& job, const Table& table,
                               int threads, const Progress& progress, std::string& sizes) {
    const double each = job.write_wdl && job.write_dtz ? 0.5 : 1;
    double before = 0;
    for (const bool dtz : {false, true}) {
        if (dtz ? !job.write_dtz : !job.write_wdl)
            continue;
        auto share = [&](double done) { progress(before + each * done); };
        const std::vector<std::uint8_t> bytes = lay_out(dtz ? make_dtz_file(table, threads, share)
                                                            : make_wdl_file(table, threads, share));
        std::string failure = write_whole_file(table_path(directory, job.signature, dtz), bytes);
        if (!failure.empty())
            return failure;
        sizes += (sizes.empty() ? "" : " + ") + std::to_string(bytes.size());
        before += each;
    }
    return "";
}

int make_tables(const CommandLine& line) {
    const std::vector<Job> jobs = plan(line);
    double total = 0;
    std::vector<Signature> to_solve;
    for (const Job& job : jobs) {
        total += work_of(job);
        if (job.solve)
            to_solve.push_back(job.signature);
    }
    if (!to_solve.empty())
        if (const std::string failure = prepare_directory(line.directory); !failure.empty())
            return complain(failure);
    ProgressLine progress = start_progress(total);
    TableSet tables;
    std::size_t solved = 0;
    for (const Job& job : jobs) {
        std::string name = name_of(job.signature);
        if (!job.write_wdl && !job.write_dtz && men_of(job.signature) > 2)
            finish_table(name + ": there and whole");
        if (!job.solve)
            continue;
        const auto start = std::chrono::steady_clock::now();
        begin_table(progress, name, work_of(job));
        const double solving =
            static_cast<double>(cells_of(make_layout(job.signature))) / work_of(job); // its share
        Table& table = solve(job.signature, tables, line.threads,
                             [&](double done) { show_progress(progress, solving * done); });
        if (job.write_wdl || job.write_dtz) {
            auto writing = [&](double done) {
                show_progress(progress, solving + (1 - solving) * done);
            };
            std::string sizes;
            const std::string failure =
                write_files(line.directory, job, table, line.threads, writing, sizes);
            if (!failure.empty())
                return complain(failure);
            if (!job.write_wdl || !job.write_dtz)
                name += job.write_wdl ? WDL_EXTENSION : DTZ_EXTENSION;
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.1f s", taken.count());
            finish_table(name + ": " + sizes + " bytes, " + seconds);
        }
        drop_distances(table);
        drop_unneeded(tables, std::span(to_solve).subspan(++solved));
    }
    return 0;
}

} // namespace brindlemoth::tablegen
