#include "program/command_line.h"

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
    "       tablegen --verify DIR [SIGNATURE...]\n"
    "\n"
    "Makes endgame tables in Syzygy format (.rtbw and .rtbz) from the rules of chess.\n"
    "\n"
    "  --men N        every table of 3 to N men; N is 3, 4 or 5\n"
    "  SIGNATURE      such as KRPvKR: this table and all that it converts into; up to 5 men\n"
    "  --out DIR      where the tables go; made if it does not exist\n"
    "  --verify DIR   reads every value of every table in DIR, or of those that are named,\n"
    "                 back and judges it by solving afresh\n"
    "  --threads N    how many threads to work with; as many as the machine has by default\n"
    "  --help         this text\n"
    "  --version      the version of the program\n"
    "\n"
    "Tables that are complete are skipped. A table gets its name only when it is\n"
    "complete. Several runs can share the work on one directory.\n"
    "\n"
    "--men 4 takes about ten seconds, 100 MB of memory and 5 MB of disk; --men 5 about 75\n"
    "minutes of processor time, 5 GB of memory and 1 GB of disk.\n"
    "\n"
    "Exit status: 0 when all is done and right, 1 otherwise, 2 for a wrong command line.\n";

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

// KRPvKR in any case of letters.
static std::string usual_case(std::string text) {
    for (char& letter : text) {
        if (letter >= 'a' && letter <= 'z' && letter != 'v')
            letter = static_cast<char>(letter - 'a' + 'A');
        else if (letter == 'V')
            letter = 'v';
    }
    return text;
}

static void add_signature(CommandLine& line, const std::string& text) {
    const std::optional<Signature> signature = parse_signature(usual_case(text));
    if (!signature)
        line.problem = "\"" + text + "\" is not a signature such as KRPvKR";
    else if (men_of(*signature) > MAX_SOLVED_MEN)
        line.problem = text + " has more than " + std::to_string(MAX_SOLVED_MEN) + " men";
    else
        line.wanted.push_back(*signature);
}

static void set_option(CommandLine& line, const std::string& option, const std::string& value) {
    if (option == "--men") {
        add_men(line, value);
    } else if (option == "--threads") {
        line.threads = read_number(value).value_or(0);
        if (line.threads < 1 || line.threads > MAX_THREADS)
            line.problem = "--threads takes a number from 1 to " + std::to_string(MAX_THREADS) +
                           ", not \"" + value + "\"";
    } else {
        line.directory = value;
        if (value.empty())
            line.problem = option + " takes a directory, not \"\"";
    }
}

CommandLine read_command_line(const std::vector<std::string>& arguments) {
    CommandLine line;
    for (const std::string& word : arguments)
        if (word == "--help" || word == "-h")
            return line;
    line.threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    std::set<std::string> given;
    for (std::size_t i = 0; i < arguments.size() && line.problem.empty(); ++i) {
        const std::string& word = arguments[i];
        if (word == "--version") {
            line.task = Task::VERSION;
            line.problem = arguments.size() > 1 ? "--version goes with nothing else" : "";
            return line;
        }
        if (word.empty() || word[0] != '-') {
            add_signature(line, word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const bool joined = equals != std::string::npos;
        const std::string option = word.substr(0, equals);
        const bool known =
            option == "--men" || option == "--out" || option == "--verify" || option == "--threads";
        if (!known)
            line.problem = "unknown option " + option;
        else if (!joined && i + 1 == arguments.size())
            line.problem = "no value after " + option;
        else if (!given.insert(option).second)
            line.problem = "more than one " + option;
        else
            set_option(line, option, joined ? word.substr(equals + 1) : arguments[++i]);
    }
    if (!line.problem.empty())
        return line;
    const bool out = given.contains("--out");
    if (given.contains("--verify")) {
        line.task = Task::VERIFY;
        if (out || given.contains("--men"))
            line.problem = "--verify goes with signatures and --threads alone";
    } else {
        line.task = Task::MAKE;
        line.problem = line.wanted.empty() ? "nothing to make; try --help"
                       : !out              ? "no --out DIR to write to"
                                           : "";
    }
    return line;
}

} // namespace brindlemoth::tablegen
