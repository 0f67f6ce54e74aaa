#include "syslib/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "CVException.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace fs = std::filesystem;

using testing::MatchesRegex;

namespace {

void Append(const std::string& path, ArchiveRule rule, std::string_view entry = "new\n") {
    LogFileEnd end{.tornLine = TornLine::StartNewLine};
    AppendToLogFile(path, entry, end, rule, "SOAP");
}

std::string AfterAppending(const TempDir& dir, ArchiveRule rule) {
    Append(dir / "l.txt", rule);
    std::string listing;
    for (const auto& name : dir.Names()) listing += name + "=" + ReadFile(dir / name).substr(0, 2) + " ";
    return listing;
}

}  // namespace

TEST(LogFile, MovesEveryArchiveUpAndDropsTheLast) {
    const struct {
        const char* what;
        std::int32_t files;
        std::vector<const char*> archives;
        const char* after;
    } cases[] = {
        {"room left", 3, {"1", "2"}, "l.txt.1=NN l.txt.2=1 l.txt.3=2 "},
        {"full chain", 3, {"1", "2", "3"}, "l.txt.1=NN l.txt.2=1 l.txt.3=2 "},
        {"a gap stays one", 9, {"1", "3"}, "l.txt.1=NN l.txt.2=1 l.txt.4=3 "},
        {"one archive only", 1, {"1"}, "l.txt.1=NN "},
        {"older ones of a longer chain stay", 2, {"1", "5"}, "l.txt.1=NN l.txt.2=1 l.txt.5=5 "},
        {"names that are no archives stay", 9, {"01", "1x"}, "l.txt.01=01 l.txt.1=NN l.txt.1x=1x "},
        {"a huge number to keep", 2000000000, {"1", "12"}, "l.txt.1=NN l.txt.13=12 l.txt.2=1 "},
        {"a negative number keeps one", -4, {"1", "2"}, "l.txt.1=NN l.txt.2=2 "},
    };
    for (const auto& c : cases) {
        const TempDir dir;
        dir.Write("l.txt", "NNNN\n");
        for (const char* number : c.archives) dir.Write("l.txt." + std::string(number), number);
        EXPECT_EQ(AfterAppending(dir, {.bytesPerFile = 5, .files = c.files}),
                  "l.txt=ne " + std::string(c.after))
            << c.what;
    }
}

TEST(LogFile, KeepsMoreArchivesThanItTriesEachTime) {
    const TempDir dir;
    dir.Write("l.txt", "NNNN\n");
    for (int number = 1; number <= 1002; ++number) dir.Write("l.txt." + std::to_string(number), "x");
    Append(dir / "l.txt", {.bytesPerFile = 5, .files = 5000});
    EXPECT_TRUE(fs::exists(dir / "l.txt.1003"));
}

// A directory may be open to those who know the names in it only.
TEST(LogFile, OverwritesNoArchiveInADirectoryThatCannotBeListed) {
    const TempDir dir;
    chmod(dir.Path().c_str(), 0733);
    const auto writer = [&] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) throw 0;
        for (int entry = 0; entry < 30; ++entry) Append(dir / "l.txt", {.bytesPerFile = 1, .files = 40});
    };
    EXPECT_EQ(InChildProcess(writer), Child::Finished);
    chmod(dir.Path().c_str(), 0755);
    EXPECT_EQ(dir.Names().size(), 30U) << "29 archives and the file";
}

TEST(LogFile, WaitsUntilTheSizeIsReached) {
    const TempDir dir;
    EXPECT_EQ(AfterAppending(dir, {.bytesPerFile = -1}), "l.txt=ne ") << "no file, nothing to archive";
    EXPECT_EQ(AfterAppending(dir, {.bytesPerFile = 5}), "l.txt=ne ");
    EXPECT_EQ(AfterAppending(dir, {.bytesPerFile = -1}), "l.txt=ne l.txt.1=ne ") << "every file is full";
}

TEST(LogFile, TellsInTheLastLineWhenItWasArchived) {
    const TempDir dir;
    dir.Write("l.txt", "torn");
    Append(dir / "l.txt", {.bytesPerFile = 1});
    EXPECT_THAT(
        ReadFile(dir / "l.txt.1"),
        MatchesRegex("torn\n[0-9]{2}/[0-9]{2}/[0-9]{4} [0-9:]{8} Archiving " + dir.Path() + "/l.txt\n"));
}

TEST(LogFile, LeavesTheFileWhereItCannotBeRenamed) {
    const TempDir dir;
    dir.Write("l.txt", "NNNN\n");
    dir.Write("l.txt.1/entry", "");  // a directory in the place of the first archive
    TakeSystemLog();
    Append(dir / "l.txt", {.bytesPerFile = 1, .files = 1});
    EXPECT_THAT(ReadFile(dir / "l.txt"), MatchesRegex("NNNN\n.* Archiving .*\nnew\n"));
    const auto reported = TakeSystemLog();
    ASSERT_EQ(reported.size(), 1U);
    EXPECT_EQ(reported[0].text, "SOAP-ERROR CVsysEventLog::Archive: Can not rename log file from '" +
                                    dir.Path() + "/l.txt' to '" + dir.Path() + "/l.txt.1'");
}

TEST(LogFile, StartsANewLineBehindWhatAKilledProgramLeft) {
    const TempDir dir;
    dir.Write("l.txt", "half an ent");
    LogFileEnd end{.tornLine = TornLine::Continue};
    AppendToLogFile(dir / "l.txt", " told\n", end, {}, "SOAP");
    EXPECT_EQ(ReadFile(dir / "l.txt"), "half an ent told\n");
    dir.Write("l.txt", "half an ent");
    Append(dir / "l.txt", {});
    Append(dir / "l.txt", {});
    EXPECT_EQ(ReadFile(dir / "l.txt"), "half an ent\nnew\nnew\n");
    dir.Write("l.txt", "a whole entry ");
    Append(dir / "l.txt", {});
    EXPECT_EQ(ReadFile(dir / "l.txt"), "a whole entry new\n");
}

TEST(LogFile, LooksAgainAtAFileThatIsNotAsItLeftIt) {
    const TempDir dir;
    LogFileEnd end{.tornLine = TornLine::StartNewLine};
    const auto after = [&](const std::string& change) {
        if (!change.empty()) dir.Write("l.txt", change);
        AppendToLogFile(dir / "l.txt", "new\n", end, {}, "SOAP");
        return ReadFile(dir / "l.txt");
    };
    EXPECT_EQ(after(""), "new\n");
    EXPECT_EQ(after("new\nhalf"), "new\nhalf\nnew\n");
    EXPECT_EQ(after("cut"), "cut\nnew\n");
    EXPECT_EQ(after(""), "cut\nnew\nnew\n");
    fs::rename(dir / "l.txt", dir / "moved.txt");
    EXPECT_EQ(after("as long as.."), "as long as..\nnew\n") << "another file";
}

TEST(LogFile, TakesBackWhatAFullDiskCutsOff) {
    const TempDir dir;
    const std::string before(1000, 'x');
    dir.Write("l.txt", before + "\n");
    const auto writer = [&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1500, 1500};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw 0;
        try {
            Append(dir / "l.txt", {}, std::string(800, 'y') + "\n");
        } catch (const CVException& failure) {
            if (failure.GetMessage() != "File Write Failed") throw 0;
            return Append(dir / "l.txt", {}, "short\n");
        }
        throw 0;
    };
    EXPECT_EQ(InChildProcess(writer), Child::Finished);
    EXPECT_EQ(ReadFile(dir / "l.txt"), before + "\nshort\n");
}
