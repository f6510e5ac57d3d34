// Judges all tables of a directory by solving their endgames afresh.
#include "file/table_file.h"
#include "program/progress_line.h"
#include "program/tasks.h"
#include "system/parallel.h"
#include "system/system.h"
#include "table_cache.h"
#include "verification/judge.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <span>
#include <system_error>

namespace brindlemoth::tablegen {

namespace {

// The table files of a directory.
struct Inventory {
    // Signatures of a size that can be solved, with one file or both, after what they convert into.
    std::vector<Signature> there;
    std::vector<std::string> skipped; // a line for each file that is not judged, and why
    std::error_code error;            // the directory could not be read
};

} // namespace

// Of all tables, or of those that are wanted if any are.
static Inventory take_inventory(const std::string& directory,
                                const std::vector<Signature>& wanted) {
    Inventory found;
    std::map<std::string, Signature> by_name;
    std::set<std::string> files;
    std::filesystem::directory_iterator entry(path_of(directory), found.error);
    for (; !found.error && entry != std::filesystem::directory_iterator();
         entry.increment(found.error)) {
        const std::filesystem::path name = entry->path().filename();
        const std::optional<Signature> signature = parse_signature(name.stem().string());
        const bool table = name.extension() == extension_of(FileKind::WDL) ||
                           name.extension() == extension_of(FileKind::DTZ);
        if (!table || !signature || name_of(*signature) != name.stem().string())
            continue;
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), *signature) == wanted.end())
            continue;
        files.insert(name.string());
        by_name[name_of(*signature)] = *signature;
    }
    for (const auto& [name, signature] : by_name) {
        const bool solvable = men_of(signature) <= MAX_SOLVED_MEN;
        if (solvable)
            found.there.push_back(signature);
        for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
            const std::string file = name + extension_of(kind);
            if (!files.contains(file))
                found.skipped.push_back(file + ": not there");
            else if (!solvable)
                found.skipped.push_back(file + ": skipped, more than " +
                                        std::to_string(MAX_SOLVED_MEN) + " men");
        }
    }
    std::vector<Signature> in_order = closure(found.there);
    std::erase_if(in_order, [&](const Signature& signature) {
        return std::find(found.there.begin(), found.there.end(), signature) == found.there.end();
    });
    found.there = std::move(in_order);
    return found;
}

namespace {

struct Judged {
    std::string path;
    TableReader reader;
    std::string fault; // of the file as a whole
    Verdict verdict;
};

} // namespace

static void judge_files(TableCache& cache, const Signature& signature, std::vector<Judged>& judged,
                        Progress progress) {
    std::mutex judging;
    solve_from(
        cache, signature,
        [&](const Part& part, int threads, Progress judging_progress) {
            std::vector<Progress> pieces = judging_progress.parts(judged.size());
            parallel_for(threads, judged.size(), [&](std::size_t j) {
                if (!judged[j].fault.empty())
                    return;
                const Verdict verdict = judge(part, judged[j].reader, std::move(pieces[j]));
                const std::lock_guard<std::mutex> lock(judging);
                add_verdict(judged[j].verdict, verdict);
            });
        },
        std::move(progress));
}

int verify_tables(const CommandLine& line) {
    const Inventory found = take_inventory(line.directory, line.wanted);
    if (found.error)
        return complain("cannot read directory " + line.directory + ": " + found.error.message());
    for (const Signature& signature : line.wanted)
        if (std::find(found.there.begin(), found.there.end(), signature) == found.there.end())
            return complain("no table " + name_of(signature) + " in " + line.directory);
    for (const std::string& text : found.skipped)
        print_line(text);
    if (found.there.empty())
        return complain("no tables of up to " + std::to_string(MAX_SOLVED_MEN) + " men in " +
                        line.directory);
    double total = 0;
    for (const Signature& signature : found.there)
        total += work_of(signature);
    ProgressLine progress = start_progress(total);
    TableCache cache{line.directory, line.threads, {}, {}};
    std::uint64_t positions = 0;
    std::size_t files = 0;
    std::size_t bad_files = 0;
    for (std::size_t i = 0; i < found.there.size(); ++i) {
        const Signature& signature = found.there[i];
        begin_table(progress, name_of(signature), work_of(signature));
        make_room(cache, std::span(found.there).subspan(i));
        std::vector<Judged> judged;
        for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
            const std::string path = table_path(line.directory, signature, kind);
            std::error_code ignored;
            if (!std::filesystem::exists(path_of(path), ignored))
                continue;
            Judged& file = judged.emplace_back();
            file.path = path;
            file.fault = open_table(path, signature, kind, file.reader);
        }
        try {
            TotalProgress total_progress{[&](double done) { show_progress(progress, done); }};
            judge_files(cache, signature, judged, Progress(total_progress));
        } catch (const std::bad_alloc&) {
            return complain("not enough memory for " + name_of(signature));
        }
        for (const auto& [path, reader, fault, verdict] : judged) {
            ++files;
            positions += verdict.positions;
            const bool bad = !fault.empty() || verdict.wrong != 0;
            bad_files += bad ? 1 : 0;
            if (!bad && reader.kind == FileKind::WDL)
                cache.trusted.insert(name_of(signature));
            std::string message = path;
            if (!fault.empty())
                message.append(" ").append(fault);
            else
                message +=
                    ": " + std::to_string(verdict.positions) + " positions, " +
                    (bad ? std::to_string(verdict.wrong) + " wrong, the first" + verdict.first_wrong
                         : "all right");
            print_line(message);
        }
    }
    clear_progress();
    std::printf("%zu files, %llu positions judged\n", files,
                static_cast<unsigned long long>(positions));
    if (bad_files != 0) {
        return complain(std::to_string(bad_files) + " of " + std::to_string(files) +
                        " files are wrong");
    }
    return 0;
}

} // namespace brindlemoth::tablegen
