// Makes the tables that the command line names, each after those that it converts into.
#include "file/table_maker.h"
#include "file/table_reader.h"
#include "progress_line.h"
#include "shelf.h"
#include "system/system.h"
#include "tasks.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <span>
#include <system_error>

namespace brindlemoth::tablegen {

namespace {

// A table to be made.
struct Job {
    Signature signature;
    std::vector<FileKind> kinds; // the files that are not there, or not whole
};

} // namespace

static Job job_of(Shelf& shelf, const Signature& signature) {
    Job job{signature, {}};
    for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
        TableReader reader;
        if (!open_table(table_path(shelf.directory, signature, kind), signature, kind, reader)
                 .empty())
            job.kinds.push_back(kind);
        else if (kind == FileKind::WDL && reader.own)
            shelf.trusted.insert(name_of(signature));
    }
    return job;
}

// Whether files can be made in the directory: better known before hours of work than after.
// Returns what is wrong, if anything.
static std::string prepare_directory(const std::string& directory) {
    std::error_code error;
    std::filesystem::create_directories(path_of(directory), error);
    if (error)
        return "cannot make directory " + directory + ": " + error.message();
    const std::string path = temporary_name((path_of(directory) / "try").string());
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return "cannot write to " + directory + ": " + std::strerror(errno);
    std::fclose(file);
    std::remove(path.c_str());
    return "";
}

// Makes the files of a job. Returns what went wrong, if anything, and otherwise tells their sizes.
static std::string make_files(Shelf& shelf, const Job& job, const Progress& progress,
                              std::string& sizes) {
    std::vector<TableFile> files;
    for (const FileKind kind : job.kinds)
        files.push_back(empty_file(kind, job.signature));
    solve_from(
        shelf, job.signature,
        [&](const Part& part, int threads, const Progress& report) {
            add_part(part, files, threads, report);
        },
        progress);
    for (const TableFile& file : files) {
        const std::vector<std::uint8_t> bytes = lay_out(file);
        std::string failure =
            write_whole_file(table_path(shelf.directory, job.signature, file.kind), bytes);
        if (!failure.empty())
            return failure;
        sizes += (sizes.empty() ? "" : " + ") + std::to_string(bytes.size());
        if (file.kind == FileKind::WDL)
            shelf.trusted.insert(name_of(job.signature));
    }
    return "";
}

int make_tables(const CommandLine& line) {
    Shelf shelf{line.directory, line.threads, {}, {}};
    std::vector<Job> jobs;
    std::vector<Signature> to_come;
    double total = 0;
    for (const Signature& signature : closure(line.wanted)) {
        if (men_of(signature) < 3)
            continue; // bare kings have no files
        jobs.push_back(job_of(shelf, signature));
        if (jobs.back().kinds.empty()) {
            finish_table(name_of(signature) + ": there and whole");
            jobs.pop_back();
            continue;
        }
        to_come.push_back(signature);
        total += work_of(signature);
    }
    if (!jobs.empty())
        if (const std::string failure = prepare_directory(line.directory); !failure.empty())
            return complain(failure);
    ProgressLine progress = start_progress(total);
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const Job& job = jobs[i];
        std::string name = name_of(job.signature);
        const auto start = std::chrono::steady_clock::now();
        begin_table(progress, name, work_of(job.signature));
        make_room(shelf, std::span(to_come).subspan(i));
        std::string sizes;
        const std::string failure = make_files(
            shelf, job, [&](double done) { show_progress(progress, done); }, sizes);
        if (!failure.empty())
            return complain(failure);
        if (job.kinds.size() == 1)
            name += extension_of(job.kinds[0]);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.1f s", taken.count());
        finish_table(name + ": " + sizes + " bytes, " + seconds);
    }
    return 0;
}

} // namespace brindlemoth::tablegen
