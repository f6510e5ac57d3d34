// Judges all tables of a directory by solving their endgames afresh.
#include "file/table_file.h"
#include "progress_line.h"
#include "tasks.h"
#include "verification/judge.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <system_error>

namespace brindlemoth::tablegen {

namespace {

// The table files of a directory.
struct Inventory {
    std::vector<Signature> there;     // of a size that can be solved, with one file or both
    std::vector<std::string> skipped; // a line for each file that is not judged, and why
    std::error_code error;            // the directory could not be read
};

} // namespace

static Inventory take_inventory(const std::string& directory) {
    Inventory found;
    std::map<std::string, Signature> by_name;
    std::set<std::string> files;
    std::filesystem::directory_iterator entry(directory, found.error);
    for (; !found.error && entry != std::filesystem::directory_iterator();
         entry.increment(found.error)) {
        const std::filesystem::path name = entry->path().filename();
        const std::optional<Signature> signature = parse_signature(name.stem().string());
        const bool table = name.extension() == WDL_EXTENSION || name.extension() == DTZ_EXTENSION;
        if (!table || !signature || name_of(*signature) != name.stem().string())
            continue;
        files.insert(name.string());
        by_name[name_of(*signature)] = *signature;
    }
    for (const auto& [name, signature] : by_name) {
        const bool solvable = men_of(signature) <= MAX_SOLVED_MEN;
        if (solvable)
            found.there.push_back(signature);
        for (const char* extension : {WDL_EXTENSION, DTZ_EXTENSION}) {
            const std::string file = name + extension;
            if (!files.contains(file))
                found.skipped.push_back(file + ": not there");
            else if (!solvable)
                found.skipped.push_back(file + ": skipped, more than " +
                                        std::to_string(MAX_SOLVED_MEN) + " men");
        }
    }
    return found;
}

int verify_tables(const CommandLine& line) {
    const Inventory found = take_inventory(line.directory);
    if (found.error)
        return complain("cannot read directory " + line.directory + ": " + found.error.message());
    for (const std::string& text : found.skipped)
        finish_table(text);
    if (found.there.empty())
        return complain("no tables of up to " + std::to_string(MAX_SOLVED_MEN) + " men in " +
                        line.directory);
    const std::vector<Signature> needed = closure(found.there);
    double total = 0;
    for (const Signature& signature : needed)
        total += static_cast<double>(cells_of(make_layout(signature)));
    ProgressLine progress = start_progress(total);
    TableSet tables;
    std::uint64_t positions = 0;
    std::size_t files = 0;
    std::size_t bad_files = 0;
    for (std::size_t i = 0; i < needed.size(); ++i) {
        const Signature& signature = needed[i];
        const std::string name = name_of(signature);
        begin_table(progress, name, static_cast<double>(cells_of(make_layout(signature))));
        Table& table = solve(signature, tables, line.threads,
                             [&](double done) { show_progress(progress, 0.5 * done); });
        for (const bool dtz : {false, true}) {
            const std::string path = table_path(line.directory, signature, dtz);
            std::error_code ignored;
            if (!std::filesystem::exists(path, ignored))
                continue;
            ++files;
            TableReader reader;
            const std::string fault = open_table(path, signature, dtz, reader);
            if (!fault.empty()) {
                ++bad_files;
                finish_table(path + " " + fault);
                continue;
            }
            auto judging = [&](double done) {
                show_progress(progress, (dtz ? 0.75 : 0.5) + 0.25 * done);
            };
            const Verdict verdict = dtz ? judge_dtz(table, reader, line.threads, judging)
                                        : judge_wdl(table, reader, line.threads, judging);
            positions += verdict.positions;
            bad_files += verdict.wrong != 0 ? 1 : 0;
            std::string text = path + ": " + std::to_string(verdict.positions) + " positions, ";
            text += verdict.wrong == 0
                        ? "all right"
                        : std::to_string(verdict.wrong) + " wrong, the first" + verdict.first_wrong;
            finish_table(text);
        }
        drop_distances(table);
        drop_unneeded(tables, std::span(needed).subspan(i + 1));
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
