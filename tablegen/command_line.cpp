#include "command_line.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <thread>

namespace brindlemoth::tablegen {

const char* const version_text = "tablegen " BRINDLEMOTH_VERSION "\n";

const char* const help_text =
    "Usage: tablegen --men 3|4|5 --out DIR\n"
    "       tablegen SIGNATURE... --out DIR\n"
    "       tablegen --verify DIR\n"
    "\n"
    "Makes endgame tables in Syzygy format (.rtbw and .rtbz) from the rules of chess.\n"
    "\n"
    "  --men N        every table of 3 to N men; N is 3, 4 or 5\n"
    "  SIGNATURE      such as KRPvKR: this table and all that it converts into; up to 5 men\n"
    "  --out DIR      where the tables go; made if it does not exist\n"
    "  --verify DIR   reads every value of every table in DIR back and judges it by solving\n"
    "                 afresh\n"
    "  --threads N    how many threads to work with; as many as the machine has by default\n"
    "  --help         this text\n"
    "  --version      the version of the program\n"
    "\n"
    "Tables that are there and whole are skipped. A table gets its name only when it is\n"
    "complete. Exit status: 0 when all is done and right, 1 otherwise.\n";

constexpr int MAX_THREADS = 256;

static std::optional<int> read_number(const std::string& text) {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && stop == end ? std::optional<int>(number) : std::nullopt;
}

static void add_men(CommandLine& line, const std::string& text) {
    const std::optional<int> men = read_number(text);
    if (!men || *men < 3 || *men > MAX_SOLVED_MEN) {
        line.problem = "--men takes 3, 4 or 5, not \"" + text + "\"";
        return;
    }
    for (int number = 3; number <= *men; ++number) {
        const std::vector<Signature> signatures = all_signatures(number);
        line.wanted.insert(line.wanted.end(), signatures.begin(), signatures.end());
    }
}

static void add_signature(CommandLine& line, const std::string& text) {
    const std::optional<Signature> signature = parse_signature(text);
    if (!signature)
        line.problem = "\"" + text + "\" is no signature: expected something like KRPvKR";
    else if (men_of(*signature) > MAX_SOLVED_MEN)
        line.problem = text + " has more than " + std::to_string(MAX_SOLVED_MEN) + " men";
    else
        line.wanted.push_back(*signature);
}

CommandLine read_command_line(const std::vector<std::string>& arguments) {
    CommandLine line;
    line.threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    std::set<std::string> given;
    for (std::size_t i = 0; i < arguments.size() && line.problem.empty(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--help" || word == "-h")
            return {};
        if (word == "--version") {
            line.task = Task::VERSION;
            line.problem = arguments.size() > 1 ? "--version goes with nothing else" : "";
            return line;
        }
        if (word.empty() || word[0] != '-') {
            add_signature(line, word);
            continue;
        }
        const bool known =
            word == "--men" || word == "--out" || word == "--verify" || word == "--threads";
        if (!known || i + 1 == arguments.size() || !given.insert(word).second) {
            line.problem = (!known                      ? "unknown option "
                            : i + 1 == arguments.size() ? "no value after "
                                                        : "more than one ") +
                           word;
            break;
        }
        const std::string& value = arguments[++i];
        if (word == "--men") {
            add_men(line, value);
        } else if (word == "--threads") {
            line.threads = read_number(value).value_or(0);
            if (line.threads < 1 || line.threads > MAX_THREADS)
                line.problem = "--threads takes a number from 1 to 256, not \"" + value + "\"";
        } else {
            line.directory = value;
            if (value.empty())
                line.problem = word + " takes a directory, not \"\"";
        }
    }
    if (!line.problem.empty())
        return line;
    const bool out = given.contains("--out");
    if (given.contains("--verify")) {
        line.task = Task::VERIFY;
        line.problem = out || !line.wanted.empty() ? "--verify goes with nothing else" : "";
    } else {
        line.task = Task::MAKE;
        line.problem = line.wanted.empty() ? "nothing to make; try --help"
                       : !out              ? "no --out DIR to write to"
                                           : "";
    }
    return line;
}

} // namespace brindlemoth::tablegen
