// The program as users run it.
#include "tablebase/table_support.h"

#include <cstdio>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brindlemoth {

struct Result {
    int status;
    std::string output; // standard output and error
};

static Result run_tablegen(const std::string& arguments, const std::string& before = "") {
    const std::string command =
        before + "\"" + std::string(TABLEGEN_PROGRAM) + "\" " + arguments + " 2>&1";
    Result run{-1, ""};
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return run;
    for (int letter = std::fgetc(pipe); letter != EOF; letter = std::fgetc(pipe))
        run.output += static_cast<char>(letter);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

static std::vector<std::string> files_in(const std::string& path) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        names.push_back(entry.path().filename().string());
    return names;
}

// A file of another maker, whose end has no checksum of ours.
static void make_foreign(const std::string& path) {
    std::string content = read_file(path);
    content[content.size() - 16] = '?';
    write_file(path, content);
}

TEST(TablegenProgram, EachFileIsMadeByItself) {
    const TemporaryDirectory directory;
    ASSERT_EQ(run_tablegen("KQvK KRvK --out " + directory.path).status, 0);
    const std::string made = read_file(directory.file("KQvK.rtbz"));
    std::filesystem::remove(directory.file("KQvK.rtbz"));
    std::filesystem::remove(directory.file("KRvK.rtbw"));
    make_foreign(directory.file("KQvK.rtbw"));
    make_foreign(directory.file("KRvK.rtbz"));
    const std::string foreign_wdl = read_file(directory.file("KQvK.rtbw"));
    const std::string foreign_dtz = read_file(directory.file("KRvK.rtbz"));
    // What --verify does not judge it names.
    write_file(directory.file("KRRRvKQQ.rtbw"), "");
    write_file(directory.file("notes.rtbw"), "");
    const Result half = run_tablegen("--verify " + directory.path);
    EXPECT_EQ(half.status, 0) << half.output;
    for (const char* line : {"KQvK.rtbz: not there\n", "KRvK.rtbw: not there\n",
                             "KRRRvKQQ.rtbw: skipped, more than 5 men\n", "2 files, "})
        EXPECT_NE(half.output.find(line), std::string::npos) << half.output;
    EXPECT_EQ(half.output.find("notes"), std::string::npos) << half.output;

    const std::string mine = directory.file("KQvK.rtbz.tmp");
    write_file(mine, "mine");
    const Result again = run_tablegen("KQvK KRvK --out " + directory.path);
    EXPECT_EQ(again.status, 0);
    EXPECT_NE(again.output.find("KQvK.rtbz: "), std::string::npos) << again.output;
    EXPECT_NE(again.output.find("KRvK.rtbw: "), std::string::npos) << again.output;
    EXPECT_EQ(read_file(directory.file("KQvK.rtbz")), made);
    EXPECT_EQ(read_file(directory.file("KQvK.rtbw")), foreign_wdl);
    EXPECT_EQ(read_file(directory.file("KRvK.rtbz")), foreign_dtz);
    EXPECT_EQ(read_file(mine), "mine");
    EXPECT_EQ(files_in(directory.path).size(), 7U);
}

TEST(TablegenProgram, RunsSideBySideDoNotDisturbEachOther) {
    const TemporaryDirectory directory;
    std::vector<std::future<Result>> runs;
    for (int i = 0; i < 4; ++i)
        runs.push_back(std::async(std::launch::async,
                                  [&] { return run_tablegen("--men 3 --out " + directory.path); }));
    for (std::future<Result>& run : runs) {
        const Result result = run.get();
        EXPECT_EQ(result.status, 0) << result.output;
    }
    EXPECT_EQ(files_in(directory.path).size(), 10U);
    EXPECT_EQ(run_tablegen("--verify " + directory.path).status, 0);
}

static const char* const kp_files[] = {"KBvK", "KNvK", "KPvK", "KQvK", "KRvK"};

TEST(TablegenProgram, MakesATableWithAllThatItConvertsInto) {
    const TemporaryDirectory directory;
    const std::string out = directory.path + "/new/tables";
    const Result made = run_tablegen("KvPK --out " + out);
    EXPECT_EQ(made.status, 0) << made.output;
    EXPECT_EQ(files_in(out).size(), 10U);
    EXPECT_EQ(made.output.find('\r'), std::string::npos); // no terminal, no changing line
    EXPECT_NE(made.output.find("KPvK: begun\nKPvK: "), std::string::npos) << made.output;
    const Result verified = run_tablegen("--verify " + out);
    EXPECT_EQ(verified.status, 0) << verified.output;
    EXPECT_NE(verified.output.find("10 files"), std::string::npos) << verified.output;

    // A second run has nothing to do, whatever the files' age.
    std::vector<std::filesystem::file_time_type> times;
    for (const char* name : kp_files)
        times.push_back(std::filesystem::last_write_time(out + "/" + name + ".rtbw"));
    EXPECT_EQ(run_tablegen("--men 3 --out " + out).status, 0);
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_EQ(std::filesystem::last_write_time(out + "/" + kp_files[i] + ".rtbw"), times[i]);

    // What is gone or damaged is made again, byte for byte; the rest stays.
    const std::string broken = out + "/KPvK.rtbz";
    const std::string whole = read_file(broken);
    std::string damaged = whole;
    damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 1);
    write_file(broken, damaged);
    EXPECT_EQ(run_tablegen("--verify " + out).status, 1);
    std::filesystem::remove(out + "/KQvK.rtbw");
    EXPECT_EQ(run_tablegen("--men 3 --out " + out).status, 0);
    EXPECT_EQ(read_file(broken), whole);
    EXPECT_TRUE(std::filesystem::exists(out + "/KQvK.rtbw"));
    EXPECT_EQ(std::filesystem::last_write_time(out + "/KRvK.rtbw"), times[4]);
    EXPECT_EQ(files_in(out).size(), 10U);
}

TEST(TablegenProgram, SaysWhatIsWrongInOneLine) {
    const TemporaryDirectory directory;
    const std::string file = directory.file("file");
    write_file(file, "");
    struct {
        std::string arguments;
        const char* expected;
    } const rows[] = {
        {"", "nothing to make"},
        {"KQvK", "no --out"},
        {"--out", "no value after --out"},
        {"--out " + directory.path, "nothing to make"},
        {"KQvX --out " + directory.path, "no signature"},
        {"KvK --out " + directory.path, "no signature"},
        {"KKvK --out " + directory.path, "no signature"},
        {"KQQvKRR --out " + directory.path, "more than 5 men"},
        {"--men 6 --out " + directory.path, "--men takes"},
        {"--men x --out " + directory.path, "--men takes"},
        {"--threads 0 --men 3 --out " + directory.path, "--threads takes"},
        {"--frobnicate", "unknown option"},
        {"KQvK --out " + directory.path + " --out " + directory.path, "more than one --out"},
        {"--verify " + directory.path + " --verify " + file, "more than one --verify"},
        {"--men 3 --verify " + directory.path, "nothing else"},
        {"--verify " + directory.path, "no tables"},
        {"--verify " + directory.path + "/none", "cannot read directory"},
        {"--verify " + file, "cannot read directory"},
        {"KQvK --out \"\"", "--out takes a directory"},
        {"--verify \"\"", "--verify takes a directory"},
        {"\"KQ\nvK\" --out " + directory.path, "\"KQ?vK\" is no signature"},
        {"KQvK --out " + file, "cannot"},
        {"KQvK --out " + file + "/below", "cannot"},
        {"KQvK --out /proc", "cannot"},
    };
    for (const auto& row : rows) {
        const Result run = run_tablegen(row.arguments);
        EXPECT_EQ(run.status, 1) << row.arguments;
        EXPECT_NE(run.output.find(row.expected), std::string::npos)
            << row.arguments << ": " << run.output;
        EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << run.output;
    }
    const Result help = run_tablegen("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("--verify DIR"), std::string::npos);
}

// A pipe or a device with a table's name is never opened; a table that is made takes its name.
TEST(TablegenProgram, OnlyRegularFilesAreOpened) {
    const TemporaryDirectory directory;
    const std::string fifo = directory.file("KQvK.rtbw");
    const std::string device = directory.file("KQvK.rtbz");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(symlink("/dev/zero", device.c_str()), 0);
    const Result verified = run_tablegen("--verify " + directory.path);
    EXPECT_EQ(verified.status, 1);
    for (const std::string& path : {fifo, device})
        EXPECT_NE(verified.output.find(path + " is no regular file"), std::string::npos)
            << verified.output;
    EXPECT_EQ(run_tablegen("KQvK --out " + directory.path).status, 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(device)));
}

// A limit on the size of files stands in for a full disk: writes fail in the same place.
TEST(TablegenProgram, AFullDiskLeavesNoHalfTable) {
    const TemporaryDirectory directory;
    const Result run =
        run_tablegen("KQvK --out " + directory.path, "trap '' XFSZ; ulimit -f 4; exec ");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.output.find("cannot write"), std::string::npos) << run.output;
    for (const std::string& name : files_in(directory.path))
        EXPECT_EQ(name, "KQvK.rtbw");
}

// Wherever memory runs out, in the threads or outside them, there is one line and no crash; what
// was written by then is whole. More memory is given until the work can be done.
TEST(TablegenProgram, TooLittleMemoryIsToldInOneLine) {
    if (TABLEGEN_IS_SANITIZED)
        GTEST_SKIP() << "a sanitized program needs more memory than any limit set here";
    const TemporaryDirectory directory;
    int told = 0;
    bool made = false;
    for (int megabytes = 8; megabytes <= 512 && !made; megabytes += 4) {
        const Result run =
            run_tablegen("--threads 4 KNNvK --out " + directory.path,
                         "ulimit -v " + std::to_string(1024 * megabytes) + "; exec ");
        made = run.status == 0;
        if (made || run.output.find("tablegen: ") == std::string::npos)
            continue; // or the program was not even loaded
        EXPECT_EQ(run.status, 1) << run.output;
        const std::size_t message = run.output.find("tablegen: not enough memory");
        EXPECT_NE(message, std::string::npos) << run.output;
        EXPECT_EQ(run.output.find('\n', message), run.output.size() - 1) << run.output;
        ++told;
    }
    EXPECT_TRUE(made);
    EXPECT_GT(told, 3);
    EXPECT_EQ(run_tablegen("--verify " + directory.path).status, 0);
}

} // namespace brindlemoth
