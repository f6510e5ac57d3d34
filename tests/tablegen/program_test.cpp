// The program as users run it.
#include "support/engine_process.h"
#include "support/system.h"
#include "tablebase/table_support.h"

#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sstream>

using namespace brindlemoth;

using Words = std::vector<std::string>;

// The words of a text, and one more that may have blanks.
static Words words(const std::string& text, const std::string& last = "") {
    std::istringstream stream(text);
    Words list{std::istream_iterator<std::string>(stream), {}};
    if (!last.empty())
        list.push_back(last);
    return list;
}

// Runs it, and expects that it ends so and says all that. Returns what it said.
static std::string expect_run(const Words& arguments, int status,
                              std::initializer_list<std::string> texts = {},
                              const std::string& script = "") {
    const ProgramRun run = run_program(TABLEGEN_PROGRAM, arguments, script);
    SCOPED_TRACE(testing::PrintToString(arguments) + ": " + run.output);
    EXPECT_EQ(run.status, status);
    for (const std::string& text : texts)
        EXPECT_NE(run.output.find(text), std::string::npos) << text;
    EXPECT_EQ(run.output.find('\r'), std::string::npos); // no terminal, no changing line
    return run.output;
}

// The files of a directory, with content and age.
using Files = std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>>;

static Files files_in(const std::string& path) {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        files[entry.path().filename().string()] = {read_file(entry.path().string()),
                                                   entry.last_write_time()};
    return files;
}

TEST(TablegenProgram, MakesWhatIsNotThere) {
    const TemporaryDirectory directory;
    const std::string out = directory.path + "/new/tables";
    const std::string log =
        expect_run(words("KvPK --out", out), 0, {"KPvK: ", "5 tables made, 0 skipped, "});
    EXPECT_EQ(log.find("begun"), std::string::npos); // quick ones are told of once
    const Files made = files_in(out);
    EXPECT_EQ(made.size(), 10U);
    expect_run({"--verify", out}, 0, {"10 files"});
    expect_run({"kpvk", "--men=3", "--out=" + out}, 0, {"0 tables made, 5 skipped, 0 bytes, "});
    EXPECT_EQ(files_in(out), made);

    // A file of another maker, whose end has no checksum of ours, stays; what lies beside the
    // tables stays as well, and --verify says what it does not judge.
    const auto change = [&](const std::string& name, std::size_t at) {
        std::string content = made.at(name).first;
        content[at] = static_cast<char>(content[at] ^ 1);
        directory.write("new/tables/" + name, content);
    };
    change("KQvK.rtbw", made.at("KQvK.rtbw").first.size() - 16);
    directory.write("new/tables/KRRRvKQQ.rtbw", "");
    directory.write("new/tables/notes.rtbw", "");
    directory.write("new/tables/KQvK.rtbz.tmp", "mine");
    std::filesystem::remove(out + "/KQvK.rtbz");
    std::filesystem::remove(out + "/KRvK.rtbw");
    const std::string said = expect_run({"--verify", out}, 0,
                                        {"KQvK.rtbz: not there\n", "KRvK.rtbw: not there\n",
                                         "KRRRvKQQ.rtbw: skipped, more than 5 men\n", "8 files, "});
    EXPECT_EQ(said.find("notes"), std::string::npos);
    // What is gone or damaged is made again, byte for byte.
    change("KPvK.rtbz", made.at("KPvK.rtbz").first.size() / 2);
    expect_run({"--verify", out}, 1);
    expect_run({"--verify", out, "KPvK", "krvk"}, 1, {"3 files, "});
    expect_run({"KBvK", "--verify=" + out}, 0, {"2 files, "});
    // A table that another run has in work, or had when it was killed, is put off.
    directory.write("new/tables/KQvK.rtbz.1.tmp", "");
    const Files before = files_in(out);
    const std::string again =
        expect_run(words("--men 3 --out", out), 0,
                   {"KQvK.rtbz: ", "KRvK.rtbw: ", "KPvK.rtbz: ", "3 tables made, 2 skipped, "});
    EXPECT_LT(again.find("KRvK.rtbw: "), again.find("KQvK.rtbz: "));
    Files after = files_in(out);
    EXPECT_EQ(after.size(), 14U);
    for (const std::string name : {"KQvK.rtbz", "KRvK.rtbw", "KPvK.rtbz"}) {
        EXPECT_EQ(after[name].first, made.at(name).first) << name;
        after.erase(name);
    }
    for (const auto& [name, file] : after)
        EXPECT_EQ(file, before.at(name)) << name;
}

// They share the work: not each makes all tables.
TEST(TablegenProgram, RunsSideBySideDoNotDisturbEachOther) {
    const TemporaryDirectory directory;
    std::vector<std::future<std::string>> runs;
    for (int i = 0; i < 4; ++i)
        runs.push_back(std::async(std::launch::async, [&] {
            return expect_run(words("--men 3 --out", directory.path), 0);
        }));
    int made = 0;
    for (std::future<std::string>& run : runs) {
        const std::string output = run.get();
        const std::size_t end = output.find(" tables made");
        ASSERT_NE(end, std::string::npos) << output;
        made += std::stoi(output.substr(output.rfind('\n', end) + 1));
    }
    EXPECT_LT(made, 4 * 5);
    EXPECT_EQ(files_in(directory.path).size(), 10U);
    expect_run({"--verify", directory.path}, 0);
}

TEST(TablegenProgram, SaysWhatIsWrongInOneLine) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "");
    // With the exit status: 2 for a wrong command line, 1 for what the system refuses.
    const struct {
        Words arguments;
        const char* expected;
        int status = 2;
    } rows[] = {
        {{}, "nothing to make"},
        {{"KQvK"}, "no --out"},
        {{"--out"}, "no value after --out"},
        {{"--out", directory.path}, "nothing to make"},
        {words("KQvX --out", directory.path), "is not a signature"},
        {words("KQQvKRR --out", directory.path), "more than 5 men"},
        {words("--men 6 --out", directory.path), "--men takes"},
        {words("--men x --out", directory.path), "--men takes"},
        {words("--threads 0 --men 3 --out", directory.path), "--threads takes"},
        {{"--frobnicate"}, "unknown option"},
        {{"KQvK", "--out", directory.path, "--out", directory.path}, "more than one --out"},
        {{"--verify", directory.path, "--verify", file}, "more than one --verify"},
        {words("KQvK --version"), "nothing else"},
        {words("--men 3 --verify", directory.path), "signatures and --threads alone"},
        {{"--verify", directory.path}, "no tables", 1},
        {{"--verify", directory.path, "KQvK"}, "no table KQvK", 1},
        {{"--verify", directory.path + "/none"}, "cannot read directory", 1},
        {{"--verify", file}, "cannot read directory", 1},
        {{"KQvK", "--out", ""}, "--out takes a directory"},
        {{"--verify="}, "--verify takes a directory"},
        {{"KQ\nvK", "--out", directory.path}, "\"KQ?vK\" is not a signature"},
        {words("KQvK --out", file), "cannot", 1},
        {words("KQvK --out", file + "/below"), "cannot", 1},
        {words("KQvK --out /proc"), "cannot", 1},
    };
    for (const auto& [arguments, expected, status] : rows) {
        const std::string output = expect_run(arguments, status, {expected});
        EXPECT_EQ(output.find('\n'), output.size() - 1) << output;
    }
    expect_run(words("--frobnicate KQvX --help"), 0, {"--verify DIR"});
}

// A pipe or a device with a table's name is never opened; a table that is made takes its name.
TEST(TablegenProgram, OnlyRegularFilesAreOpened) {
    const TemporaryDirectory directory;
    const std::string fifo = directory.file("KQvK.rtbw");
    const std::string device = directory.file("KQvK.rtbz");
    if (!make_named_pipe(fifo))
        GTEST_SKIP() << "needs pipes that have names";
    std::filesystem::create_symlink("/dev/zero", device);
    expect_run({"--verify", directory.path}, 1,
               {fifo + " is not a regular file", device + " is not a regular file"});
    expect_run(words("KQvK --out", directory.path), 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(device)));
}

// A limit on the size of files stands in for a full disk: writes fail in the same place.
TEST(TablegenProgram, AFullDiskLeavesNoHalfTable) {
    if (!on_posix)
        GTEST_SKIP() << "needs a shell that sets limits";
    const TemporaryDirectory directory;
    expect_run(words("KQvK --out", directory.path), 1, {"cannot write"},
               "trap '' XFSZ; ulimit -f 4");
    for (const auto& [name, file] : files_in(directory.path))
        EXPECT_EQ(name, "KQvK.rtbw");
}

// Wherever memory runs out, in the threads or outside them, there is one line and no crash; what
// was written by then is whole. More memory is given until the work can be done.
TEST(TablegenProgram, TooLittleMemoryIsToldInOneLine) {
    if (!on_posix)
        GTEST_SKIP() << "needs a shell that sets limits";
    if (run_program(TABLEGEN_PROGRAM, {"--help"}, "ulimit -v 524288").status != 0)
        GTEST_SKIP() << "a sanitizer's shadow memory does not fit below a limit";
    const TemporaryDirectory directory;
    int told = 0;
    bool made = false;
    for (int megabytes = 8; megabytes <= 512 && !made; megabytes += 4) {
        const ProgramRun run =
            run_program(TABLEGEN_PROGRAM, words("--threads 4 KNNvK --out", directory.path),
                        "ulimit -v " + std::to_string(1024 * megabytes));
        made = run.status == 0;
        if (made || run.output.find("tablegen: ") == std::string::npos)
            continue; // or the program was not even loaded
        EXPECT_EQ(run.status, 1) << run.output;
        const std::size_t message = run.output.find("tablegen: not enough memory for K");
        EXPECT_NE(message, std::string::npos) << run.output;
        EXPECT_EQ(run.output.find('\n', message), run.output.size() - 1) << run.output;
        ++told;
    }
    EXPECT_TRUE(made);
    EXPECT_GT(told, 3);
    expect_run({"--verify", directory.path}, 0);
}
