// Judges all tables of a directory by solving their endgames afresh.
#include "progress_line.h"
#include "tasks.h"
#include "verify/judge.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace brindlemoth::tablegen {

// The signatures that have a file in the directory; false in `solvable` for too many men.
static std::vector<Signature> signatures_there(const std::string& directory) {
    std::vector<Signature> there;
    for (int men = 3; men <= MAX_SOLVED_MEN; ++men) {
        for (const Signature& signature : all_signatures(men)) {
            std::error_code ignored;
            if (std::filesystem::exists(table_path(directory, signature, false), ignored) ||
                std::filesystem::exists(table_path(directory, signature, true), ignored))
                there.push_back(signature);
        }
    }
    return there;
}

int verify_tables(const CommandLine& line) {
    std::error_code error;
    if (!std::filesystem::is_directory(line.directory, error))
        return complain("no directory " + line.directory);
    const std::vector<Signature> there = signatures_there(line.directory);
    if (there.empty())
        return complain("no tables of up to 5 men in " + line.directory);
    const std::vector<Signature> needed = closure(there);
    double total = 0;
    for (const Signature& signature : needed)
        total += static_cast<double>(cells_of(make_layout(signature)));
    ProgressLine progress = start_progress(total);
    TableSet tables;
    std::uint64_t positions = 0;
    std::size_t files = 0;
    std::size_t bad_files = 0;
    for (const Signature& signature : needed) {
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
            const Verdict verdict = dtz ? judge_dtz(table, reader, line.threads)
                                        : judge_wdl(table, reader, line.threads);
            positions += verdict.positions;
            bad_files += verdict.wrong != 0 ? 1 : 0;
            std::string text = path + ": " + std::to_string(verdict.positions) + " positions, ";
            text += verdict.wrong == 0
                        ? "all right"
                        : std::to_string(verdict.wrong) + " wrong, the first" + verdict.first_wrong;
            finish_table(text);
            show_progress(progress, dtz ? 1 : 0.75);
        }
        drop_distances(table);
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
