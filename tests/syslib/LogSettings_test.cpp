#include "syslib/LogSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "CVioFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RunTogether.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

const std::string kNewSection =
    "\n[SOAP]\nwriter=file\nlevel=info\nfilePath=logs/soap_log.txt\nbytesPerFiles=204800\nnumFiles=20\n"
    "autoAppend=1\nperProcessFile=0\n";

// What other programs of a site may have put into the file.
const std::string kOthers =
    "# kept by hand\n\n[main]\nlevel=error\n\n[Email Gateway]\n# traced since May\nlevel=trace\n";

std::optional<LogSettings> Load(const TempDir& dir) {
    return LoadLogSettings(dir / "cvlogs.ini", "SOAP", "logs/soap_log.txt");
}

// "file 3: key=value key=value", in the order in which the writer gets them.
std::string Rendered(const LogSettings& settings) {
    std::string text = settings.writer + " " + std::to_string(static_cast<unsigned>(settings.level)) + ":";
    for (const auto& [key, value] : settings.properties)
        text.append(" ").append(key).append("=").append(value);
    return text;
}

// Runs `body` with the rights of a web user.
Child AsAnotherUser(const std::function<void()>& body) {
    return InChildProcess([&] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) throw 0;
        body();
    });
}

void Require(bool holds) {
    if (!holds) throw 0;
}

}  // namespace

TEST(LogSettingsOfAModule, TakesAKeyFromTheSectionThenFromMainThenFromTheDefaults) {
    const std::pair<const char*, const char*> cases[] = {
        {"[SOAP]\nlevel=trace\nfilePath=a\n", "file 1: level=trace filePath=a"},
        {"[soap]\nLEVEL=debug\n", "file 2: filePath=logs/soap_log.txt LEVEL=debug"},
        {"[main]\nlevel=fatal\nnumFiles=3\ncolour=red\n[SOAP]\nnumFiles=4\n",
         "file 7: level=fatal filePath=logs/soap_log.txt numFiles=4"},
        {"[main]\nfilePath=m\nautoAppend=1\n[SOAP]\nwriter=sqlite\ntruncate=0\ndbfilename=d\n",
         "sqlite 3: filePath=m autoAppend=1 writer=sqlite truncate=0 dbfilename=d"},
        // Typing errors: a blank before "=" hides a key, an unknown level must not silence the log.
        {"[SOAP]\nlevel = trace\n", "file 3: filePath=logs/soap_log.txt level =trace"},
        {"[SOAP]\nlevel=none\n", "file 4: filePath=logs/soap_log.txt level=none"},
    };
    for (const auto& [file, settings] : cases) {
        const TempDir dir;
        dir.Write("cvlogs.ini", file);
        EXPECT_EQ(Rendered(Load(dir).value()), settings) << file;
        EXPECT_EQ(ReadFile(dir / "cvlogs.ini"), file) << "a section that is there is never rewritten";
    }
}

TEST(LogSettingsOfAModule, AddsAMissingSectionAtTheEndAndKeepsTheRest) {
    const std::string defaults =
        "file 3: writer=file level=info filePath=logs/soap_log.txt bytesPerFiles=204800 numFiles=20 "
        "autoAppend=1 perProcessFile=0";
    const struct {
        const char* what;
        std::string before;
        std::string after;
    } cases[] = {
        {"other sections", kOthers, kOthers + kNewSection},
        {"nothing", "", "\n[main]\n" + kNewSection},
        {"no main section", "\n[CLI]\nlevel=warn\n", "\n[CLI]\nlevel=warn\n\n[main]\n" + kNewSection},
    };
    for (const auto& c : cases) {
        const TempDir dir;
        dir.Write("cvlogs.ini", c.before);
        EXPECT_EQ(Rendered(Load(dir).value()), defaults) << c.what << ": whatever [main] says";
        EXPECT_EQ(ReadFile(dir / "cvlogs.ini"), c.after) << c.what;
    }
    const TempDir fresh;
    EXPECT_EQ(Rendered(Load(fresh).value()), defaults);
    EXPECT_EQ(ReadFile(fresh / "cvlogs.ini"), "\n[main]\n" + kNewSection) << "no file at all";
}

TEST(LogSettingsOfAModule, LeavesOutADefaultThatIsTooLongForALine) {
    const TempDir dir;
    const std::string longPath(600, 'p');
    for (int start = 0; start < 2; ++start) {
        const auto settings = LoadLogSettings(dir / "cvlogs.ini", "SOAP", longPath).value();
        EXPECT_THAT(settings.properties, testing::Contains(testing::Pair("filePath", longPath)));
        EXPECT_THAT(settings.properties, testing::Contains(testing::Pair("bytesPerFiles", "204800")));
    }
}

TEST(LogSettingsOfAModule, KeepsLinkAndModeOfTheFileItReplaces) {
    const TempDir dir;
    const std::string real = dir.Write("shared/logs.ini", kOthers);
    chmod(real.c_str(), 0640);
    fs::create_symlink(real, dir / "cvlogs.ini");
    ASSERT_TRUE(Load(dir));
    EXPECT_TRUE(fs::is_symlink(dir / "cvlogs.ini"));
    EXPECT_EQ(ReadFile(real), kOthers + kNewSection);
    EXPECT_EQ(fs::status(real).permissions(), fs::perms(0640));

    const TempDir unmounted;
    fs::create_symlink(unmounted / "gone/logs.ini", unmounted / "cvlogs.ini");
    ASSERT_TRUE(Load(unmounted));
    EXPECT_TRUE(fs::is_symlink(unmounted / "cvlogs.ini")) << "a link that leads nowhere now stays";
}

TEST(LogSettingsOfAModule, FailsForAFileThatIsThereAndCannotBeRead) {
    const TempDir closed;
    chmod(closed.Path().c_str(), 0755);
    chmod(closed.Write("cvlogs.ini", kOthers).c_str(), 0600);
    if (geteuid() != 0) chmod((closed / "cvlogs.ini").c_str(), 0);
    EXPECT_EQ(AsAnotherUser([&] { Require(!Load(closed)); }), Child::Finished);
}

TEST(LogSettingsOfAModule, HoldsTheDefaultsInMemoryWhereNothingCanBeWritten) {
    for (const char* file : {"", kOthers.c_str()}) {
        const TempDir dir;
        if (*file != '\0') chmod(dir.Write("cvlogs.ini", file).c_str(), 0444);
        chmod(dir.Path().c_str(), 0555);
        EXPECT_EQ(AsAnotherUser([&] {
                      TakeSystemLog();
                      const auto settings = Load(dir);
                      Require(settings && settings->properties.size() == 7);
                      Require(TakeSystemLog().empty());  // that would be an entry for every request
                  }),
                  Child::Finished);
        chmod(dir.Path().c_str(), 0755);
        EXPECT_EQ(ReadFile(dir / "cvlogs.ini"), file);
    }
}

TEST(LogSettingsOfAModule, RewritesInPlaceWhereTheDirectoryTakesNoNewFiles) {
    const TempDir dir;
    chmod(dir.Write("cvlogs.ini", kOthers).c_str(), 0666);
    chmod(dir.Path().c_str(), 0555);
    EXPECT_EQ(AsAnotherUser([&] { Require(Load(dir).has_value()); }), Child::Finished);
    chmod(dir.Path().c_str(), 0755);
    EXPECT_EQ(ReadFile(dir / "cvlogs.ini"), kOthers + kNewSection);
}

TEST(LogSettingsOfAModule, WaitsWhileAnotherProgramWritesTheFile) {
    const TempDir dir;
    const std::string path = dir.Write("cvlogs.ini", "[SOAP]\nlevel=info\n");
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t editor = StartChild([&] {
        CVioFile file(path);
        file.Open("r+");
        file.Lock('w', true);
        Require(write(pipes[1], "x", 1) == 1);
        usleep(30'000);
        file.Truncate(0);
        file.Write("[SOAP]\nlevel=error\n");
    });
    char locked;
    ASSERT_EQ(read(pipes[0], &locked, 1), 1);
    EXPECT_EQ(Load(dir).value().level, LogLevel::Error);
    EXPECT_EQ(WaitForChild(editor), Child::Finished);
    close(pipes[0]);
    close(pipes[1]);
}

// A fresh site: the web server starts many programs at once, all of them for the first time.
TEST(LogSettingsOfAModule, LosesNothingWhenManyProcessesStartForTheFirstTime) {
    constexpr int kProcesses = 32;
    constexpr int kModules = 16;
    for (const bool inPlace : {false, true}) {
        const TempDir dir;
        chmod(dir.Write("cvlogs.ini", kOthers).c_str(), 0666);
        if (inPlace) chmod(dir.Path().c_str(), 0555);
        const auto start = [&](int process) {
            if (inPlace && geteuid() == 0) Require(setuid(65534) == 0);
            const std::string module = "M" + std::to_string(process % kModules);
            const auto settings = LoadLogSettings(dir / "cvlogs.ini", module, "l");
            Require(Rendered(settings.value()).starts_with("file 3: writer=file"));
        };
        RunTogether(kProcesses, start);
        chmod(dir.Path().c_str(), 0755);
        std::string file = ReadFile(dir / "cvlogs.ini");
        EXPECT_TRUE(file.starts_with(kOthers)) << (inPlace ? "in place" : "replaced");
        for (int module = 0; module < kModules; ++module) {
            EXPECT_NE(file.find("\n[M" + std::to_string(module) + "]\nwriter=file\n"), file.npos) << module;
        }
        EXPECT_EQ(std::count(file.begin(), file.end(), '['), 2 + kModules) << "some section is there twice";
    }
}
