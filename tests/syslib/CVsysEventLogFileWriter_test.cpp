#include "syslib/CVsysEventLogFileWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "syslib/LogLevel.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

const std::string kTimePattern = "[0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2} ";

int Write(CVsysEventLogFileWriter& writer, const std::string& message, const std::string& module = "SOAP",
          LogLevel level = LogLevel::Info) {
    return writer.DoWork(module, static_cast<unsigned>(level), message, -1, nullptr, 0);
}

}  // namespace

TEST(CVsysEventLogFileWriter, WritesTimeModuleTagAndMessage) {
    const TempDir dir;
    CVsysEventLogFileWriter writer("SOAP");
    ASSERT_TRUE(writer.setProperty("FILEPATH", dir / "soap_log.txt"));
    EXPECT_EQ(Write(writer, "100%n done\n"), 1);
    EXPECT_EQ(Write(writer, "no level\n", "SOAP", LogLevel::None), 1);
    EXPECT_EQ(writer.DoWork("SOAP", 7, "old\n", -1, nullptr, 86400L * 365), 1);
    EXPECT_THAT(ReadFile(dir / "soap_log.txt"),
                MatchesRegex(kTimePattern + "SOAP \\[INFO\\] 100%n done\n" + kTimePattern +
                             "SOAP  no level\n" + "[0-9/]{6}197[01] [0-9:]{8} SOAP \\[FATAL\\] old\n"));
}

TEST(CVsysEventLogFileWriter, EndsLinesOnlyWhereAutoAppendIsSetAndTheMessageDoesNot) {
    const struct {
        const char* message;
        const char* plain;
        const char* appended;
    } cases[] = {
        {"text", "text", "text\n"},
        {"text\n", "text\n", "text\n"},
        {"text ", "text ", "text "},
        {"caf\xE9", "caf\xE9", "caf\xE9\n"},
        {"", "", ""},
        {"\x1b[31m\n", "\\x1b[31m\n", "\\x1b[31m\n"},
    };
    for (const auto& c : cases) {
        const TempDir dir;
        CVsysEventLogFileWriter plain("SOAP");
        plain.setFilePath(dir / "plain");
        Write(plain, c.message);
        CVsysEventLogFileWriter appending("SOAP");
        appending.setFilePath(dir / "appending");
        EXPECT_TRUE(appending.setProperty("autoAppend", "0")) << "any value switches it on";
        Write(appending, c.message);
        EXPECT_THAT(ReadFile(dir / "plain"), testing::EndsWith("[INFO] " + std::string(c.plain)));
        EXPECT_THAT(ReadFile(dir / "appending"), testing::EndsWith("[INFO] " + std::string(c.appended)));
    }
}

TEST(CVsysEventLogFileWriter, WritesOneFilePerModuleWhenToldTo) {
    const TempDir dir;
    CVsysEventLogFileWriter writer("SOAP");
    writer.setFilePath(dir / "soap_log.txt");
    writer.setProperty("perProcessFile", "1");
    EXPECT_EQ(Write(writer, "one\n", "System Attendant"), 1);
    EXPECT_EQ(Write(writer, "two\n", "../up"), 1);
    EXPECT_THAT(ReadFile(dir / "System_Attendant.txt"), MatchesRegex(kTimePattern + "\\[INFO\\] one\n"));
    EXPECT_THAT(ReadFile(dir / ".._up.txt"), HasSubstr("two")) << "no module name leads out of the directory";
    EXPECT_EQ(ReadFile(dir / "soap_log.txt"), "");
}

TEST(CVsysEventLogFileWriter, KeepsTheOldNumberWhereANewOneIsRefused) {
    const struct {
        const char* key;
        const char* value;
        bool accepted;
        bool archives;  // a file of 300 bytes
    } cases[] = {
        {"bytesPerFiles", "0", false, false},   {"bytesPerFiles", "many", false, false},
        {"bytesPerFiles", "200KB", true, true}, {"bytesPerFiles", "4294967296", true, false},
        {"bytesPerFiles", "-1", true, true},    {"numFiles", "0", false, false},
        {"unknown", "0", true, false},
    };
    for (const auto& c : cases) {
        const TempDir dir;
        dir.Write("l.txt", std::string(300, 'x') + "\n");
        CVsysEventLogFileWriter writer("SOAP");
        writer.setFilePath(dir / "l.txt");
        EXPECT_EQ(writer.setProperty(c.key, c.value), c.accepted) << c.key << "=" << c.value;
        EXPECT_EQ(Write(writer, "m\n"), 1);
        EXPECT_EQ(std::filesystem::exists(dir / "l.txt.1"), c.archives) << c.key << "=" << c.value;
    }
}

TEST(CVsysEventLogFileWriter, KeepsTheOldPathWhereANewOneIsRefused) {
    const TempDir dir;
    const std::string file = dir.Write("file", "");
    CVsysEventLogFileWriter writer("SOAP");
    EXPECT_FALSE(writer.isReady());
    EXPECT_EQ(Write(writer, "lost"), 0);
    ASSERT_TRUE(writer.setFilePath(dir / "l.txt"));
    TakeSystemLog();
    for (const std::string& path : {std::string(), dir / "missing/l.txt", file + "/l.txt", dir.Path()}) {
        EXPECT_FALSE(writer.setFilePath(path)) << path;
    }
    const auto reported = TakeSystemLog();
    EXPECT_EQ(reported.size(), 3U) << "an empty path is refused without a word";
    EXPECT_THAT(reported[0].text,
                testing::StartsWith("SOAP-ERROR CVsysEventLogInterface::setFilePath: Exception"));
    EXPECT_EQ(Write(writer, "kept\n"), 1);
    EXPECT_THAT(ReadFile(dir / "l.txt"), HasSubstr("kept"));
}

// An old log file in a directory that takes no new files could be written, but not locked or archived.
TEST(CVsysEventLogFileWriter, RefusesADirectoryThatTakesNoNewFiles) {
    const TempDir dir;
    std::filesystem::permissions(dir.Write("l.txt", ""), std::filesystem::perms(0666));
    chmod(dir.Path().c_str(), 0555);
    const auto asAnotherUser = [&] {
        if (geteuid() == 0 && setuid(65534) != 0) throw 0;
        CVsysEventLogFileWriter writer("SOAP");
        if (writer.setFilePath(dir / "l.txt")) throw 0;
    };
    EXPECT_EQ(InChildProcess(asAnotherUser), Child::Finished);
    chmod(dir.Path().c_str(), 0755);
}

TEST(CVsysEventLogFileWriter, ClearsAwayDeadLocksAndIsNotReadyWithoutItsOwn) {
    const TempDir dir;
    dir.Write("other.txt.lock", "");
    dir.Write("l.txt.lock/entry", "");  // nobody can lock a directory for writing
    CVsysEventLogFileWriter writer("SOAP");
    ASSERT_TRUE(writer.setFilePath(dir / "l.txt"));
    TakeSystemLog();
    writer.PrepareDirectory();
    EXPECT_THAT(dir.Names(), ElementsAre("l.txt", "l.txt.lock"));
    EXPECT_FALSE(writer.isReady());
    EXPECT_THAT(TakeSystemLog().at(0).text,
                HasSubstr("loadWriterConfig: Can not lock '" + dir.Path() + "/l.txt.lock'"));
}

// A holder that hangs must not cost a request a minute for each of its entries.
TEST(CVsysEventLogFileWriter, WaitsAboutAMinuteOnceAndASecondFromThenOn) {
    const TempDir dir;
    std::chrono::microseconds waited{0};
    CVsysEventLogFileWriter writer("SOAP", WriterMode::Write, [&](auto pause) { waited += pause; });
    writer.setFilePath(dir / "l.txt");
    TakeSystemLog();
    {
        const LockFile held(dir / "l.txt.lock");
        EXPECT_EQ(Write(writer, "first"), 0);
        EXPECT_EQ(std::exchange(waited, {}), std::chrono::seconds(60));
        EXPECT_EQ(Write(writer, "second"), 0);
        EXPECT_EQ(std::exchange(waited, {}), std::chrono::milliseconds(990));
    }
    EXPECT_EQ(Write(writer, "third\n"), 1);
    {
        const LockFile held(dir / "l.txt.lock");
        EXPECT_EQ(Write(writer, "fourth"), 0);
    }
    EXPECT_EQ(waited, std::chrono::seconds(60)) << "a success brings the full patience back";
    EXPECT_THAT(
        TakeSystemLog().at(0).text,
        MatchesRegex("SOAP-ERROR CVsysEventLogFileWriter::DoWork: Exception raised! File\\[LockFile\\] "
                     "Line\\[[0-9]+\\] Msg\\[LockFile Creation Failed\\] SysMsg\\[.*\\]"));
}

TEST(CVsysEventLogFileWriter, WaitsAMinuteInAllWithinOneRun) {
    const auto inARun = [] {  // in a process of its own: a run begun cannot be left
        const TempDir dir;
        std::chrono::microseconds waited{0};
        CVsysEventLogFileWriter writer("SOAP", WriterMode::Write, [&](auto pause) { waited += pause; });
        writer.setFilePath(dir / "l.txt");
        const auto waits = [&](const char* message, int result) {
            if (Write(writer, message) != result) throw 0;
            return std::exchange(waited, {});
        };
        TakeSystemLog();
        BeginLogRun();
        {
            const LockFile held(dir / "l.txt.lock");
            if (waits("first", 0) != std::chrono::seconds(60)) throw 0;
            if (TakeSystemLog().at(0).text.find("waits no longer") == std::string::npos) throw 0;
            if (waits("second", 0) != std::chrono::seconds(0)) throw 0;
        }
        if (waits("third\n", 1) != std::chrono::seconds(0)) throw 0;
        BeginLogRun();
        const LockFile held(dir / "l.txt.lock");
        if (waits("fourth", 0) != std::chrono::seconds(60)) throw 0;
    };
    EXPECT_EQ(InChildProcess(inARun), Child::Finished);
}
