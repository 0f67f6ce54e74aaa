#include "syslib/LogArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace {

std::string AfterArchiving(const TempDir& dir, ArchiveRule rule) {
    ArchiveWhenFull(dir / "l.txt", rule, "SOAP");
    std::string listing;
    for (const auto& name : dir.Names()) listing += name + "=" + ReadFile(dir / name).substr(0, 2) + " ";
    return listing;
}

}  // namespace

TEST(LogArchive, MovesEveryArchiveUpAndDropsTheLast) {
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
        {"names that are no archives stay",
         9,
         {"01", "1x", "-2", "gz"},
         "l.txt.-2=-2 l.txt.01=01 l.txt.1=NN l.txt.1x=1x l.txt.gz=gz "},
        {"a huge number to keep", 2000000000, {"1", "12"}, "l.txt.1=NN l.txt.13=12 l.txt.2=1 "},
        {"a negative number keeps one", -4, {"1", "2"}, "l.txt.1=NN l.txt.2=2 "},
    };
    for (const auto& c : cases) {
        const TempDir dir;
        dir.Write("l.txt", "NNNN\n");
        for (const char* number : c.archives) dir.Write("l.txt." + std::string(number), number);
        EXPECT_EQ(AfterArchiving(dir, {.bytesPerFile = 5, .files = c.files}), c.after) << c.what;
    }
}

TEST(LogArchive, WaitsUntilTheSizeIsReached) {
    const TempDir dir;
    ArchiveWhenFull(dir / "l.txt", {.bytesPerFile = -1}, "SOAP");
    EXPECT_THAT(dir.Names(), IsEmpty()) << "no file, nothing to archive";
    dir.Write("l.txt", "NNNN\n");
    EXPECT_EQ(AfterArchiving(dir, {.bytesPerFile = 6}), "l.txt=NN ");
    EXPECT_EQ(AfterArchiving(dir, {.bytesPerFile = -1}), "l.txt.1=NN ") << "below zero, every file is full";
}

TEST(LogArchive, TellsInTheLastLineWhenItHappened) {
    const TempDir dir;
    dir.Write("l.txt", "NNNN\n");
    ArchiveWhenFull(dir / "l.txt", {.bytesPerFile = 1}, "SOAP");
    EXPECT_THAT(
        ReadFile(dir / "l.txt.1"),
        MatchesRegex("NNNN\n[0-9]{2}/[0-9]{2}/[0-9]{4} [0-9:]{8} Archiving " + dir.Path() + "/l.txt\n"));
}

TEST(LogArchive, LeavesTheFileWhereItCannotBeRenamed) {
    const TempDir dir;
    dir.Write("l.txt", "NNNN\n");
    dir.Write("l.txt.1/entry", "");  // a directory in the place of the first archive, and of the second
    dir.Write("l.txt.2/entry", "");
    TakeSystemLog();
    ArchiveWhenFull(dir / "l.txt", {.bytesPerFile = 1, .files = 1}, "SOAP");
    EXPECT_THAT(ReadFile(dir / "l.txt"), HasSubstr("NNNN\n"));
    const auto reported = TakeSystemLog();
    ASSERT_EQ(reported.size(), 1U);
    EXPECT_EQ(reported[0].text, "SOAP-ERROR CVsysEventLog::Archive: Can not rename log file from '" +
                                    dir.Path() + "/l.txt' to '" + dir.Path() + "/l.txt.1'");
}
