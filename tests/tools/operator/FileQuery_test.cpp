#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "syslib/CVsysEventLogFileWriter.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/tools/operator/OperatorSite.h"
#include "tools/cvlogs/LogFile.h"

using namespace quorbel;

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

std::string Line(int second, const char* rest) {
    return "02/01/2024 09:05:0" + std::to_string(second) + " " + rest + "\n";
}

/// A log of four files: the oldest archive compressed, and one archive both plain and compressed.
struct RotatedLog {
    RotatedLog() {
        site.Files().Write("logs/soap.txt.3", Line(1, "SOAP [INFO] one") + Line(1, "Archiving soap.txt"));
        site.Files().Write("logs/soap.txt.2", Line(2, "SOAP.Send [ERROR] two\n<Body>\n</Body>"));
        site.Files().Write("logs/soap.txt.1", Line(3, "CLI [WARN] three [INFO] timeout"));
        site.Files().Write("logs/soap.txt", Line(4, "SOAP  four") + Line(5, "SOAP [DEBUG] five"));
        Gzip("-9", "logs/soap.txt.3");
        Gzip("-k", "logs/soap.txt.2");
    }

    void Gzip(const char* option, const char* file) {
        RunProgram({.program = "/bin/gzip", .arguments = {option, site.Files() / file}});
    }

    std::string Query(std::vector<std::string> options) {
        options.insert(options.begin(), {"query", "--file", site.Files() / "logs/soap.txt"});
        return Outcome(site.Logs(options));
    }

    OperatorSite site{"[main]\n[SOAP]\nfilePath={SITE}/logs/soap.txt\n"};
};

const std::string kOne = Line(1, "SOAP [INFO] one");
const std::string kTwo = Line(2, "SOAP.Send [ERROR] two\n<Body>\n</Body>");
const std::string kThree = Line(3, "CLI [WARN] three [INFO] timeout");
const std::string kFour = Line(4, "SOAP  four");
const std::string kFive = Line(5, "SOAP [DEBUG] five");

/// cvlogs in the background, with its output in a file; ended with the object.
class Following {
public:
    Following(const OperatorSite& site, const std::vector<std::string>& arguments)
        : output_(site.Files() / "followed"), pid_(StartChild([&] {
              std::vector<char*> argv{const_cast<char*>("cvlogs")};
              for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
              argv.push_back(nullptr);
              if (std::freopen(output_.c_str(), "w", stdout) != nullptr) execv(CVLOGS_PROGRAM, argv.data());
          })) {}
    ~Following() {
        kill(pid_, SIGKILL);
        WaitForChild(pid_);
    }

    std::string Output() const { return std::filesystem::exists(output_) ? ReadFile(output_) : ""; }
    bool Shows(const std::string& text) const {
        return Eventually([&] { return Output().find(text) != std::string::npos; });
    }

private:
    const std::string output_;
    const pid_t pid_;
};

void WriteNumbers(const std::string& path, const std::string& writer, int count) {
    CVsysEventLogFileWriter log("test");
    log.setProperty("filePath", path);
    log.setProperty("autoAppend", "1");
    log.setProperty("bytesPerFiles", "2000");
    log.setProperty("numFiles", "1000");
    for (int number = 0; number < count; ++number) {
        log.DoWork("SOAP", 3, writer + std::to_string(number) + ";", -1, nullptr, 0);
    }
}

}  // namespace

TEST(FileQuery, ReadsALogWithItsArchives) {
    RotatedLog log;
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, kOne + kTwo + kThree + kFour + kFive},
        {{"-n", "2"}, kFour + kFive},
        {{"--newest", "--limit", "2"}, kFive + kFour},
        {{"--level", "warn"}, kTwo + kThree},
        {{"--level", "info"}, kOne + kTwo + kThree},
        {{"--module", "SOAP"}, kOne + kTwo + kFour + kFive},
        {{"--module", "SOAP", "--sub", "Send"}, kTwo},
        {{"--grep", "t(w|hre)"}, kTwo + kThree},
        {{"--grep", "^f.*e$"}, kFive},
        {{"--grep", "05:0"}, ""},  // the time is no part of the message
        {{"--grep", "Body.*\\nx|</Body"}, kTwo},
        {{"--since", "2024-02-01 09:05:03", "--until", "2024-02-01T09:05:04"}, kThree + kFour},
        {{"--time", "%:05"}, kFive},
        {{"--by-level"}, kFour + kFive + kOne + kThree + kTwo},
    };
    for (const auto& [options, lines] : cases) {
        const std::string expected = lines.empty() ? "1 cvlogs: no such entries\n" : "0 " + lines;
        EXPECT_EQ(log.Query(options), expected) << testing::PrintToString(options);
    }
    EXPECT_EQ(Outcome(log.site.Logs(
                  {"query", "--config-dir", log.site.Config(), "--module", "SOAP", "--limit", "1"})),
              "0 " + kOne);
    EXPECT_EQ(
        Outcome(log.site.Logs({"count", "--file", log.site.Files() / "logs/soap.txt", "--level", "warn"})),
        "0       1 02/01/2024 09:05:03 [WARN] three [INFO] timeout\n");
    EXPECT_EQ(
        log.Query({"--module", "CLI", "--json"}),
        "0 {\"id\":null,\"module\":\"\",\"timestamp\":1706778303,\"level\":4,\"message\":\"three [INFO] "
        "timeout\",\"line\":-1,\"srcfile\":\"\",\"tempcol\":\"02/01/2024 09:05:03\"}\n");
}

TEST(FileQuery, ReadsEntriesThatNoBufferHolds) {
    const OperatorSite site;
    const std::string large(5'000'000, 'x');
    const std::string path =
        site.Files().Write("a.txt", Line(1, ("A [INFO] " + large).c_str()) + Line(2, "A [INFO] end"));
    EXPECT_EQ(site.Logs({"query", "--file", path, "--limit", "1"}).output.size(), large.size() + 30);
    EXPECT_EQ(Outcome(site.Logs({"query", "--file", path, "--grep", "end"})), "0 " + Line(2, "A [INFO] end"));
}

TEST(FileQuery, TellsWhatItCannotRead) {
    RotatedLog log;
    EXPECT_THAT(Outcome(log.site.Logs({"query", "--file", log.site.Files() / "none"})),
                HasSubstr("no log file"));
    EXPECT_THAT(Outcome(log.site.Logs({"query", "--file", log.site.Config()})), HasSubstr("no regular file"));
    EXPECT_THAT(log.Query({"--grep", "("}), HasSubstr("is no regular expression"));
    std::filesystem::resize_file(log.site.Files() / "logs/soap.txt.3.gz", 30);
    const std::string cut = log.Query({});
    EXPECT_THAT(cut, HasSubstr("soap.txt.3.gz"));
    EXPECT_THAT(cut, testing::StartsWith("1 "));
}

TEST(FileQuery, FollowsOverRotationsWithoutLosingOrDoublingALine) {
    const OperatorSite site;
    const std::string path = site.Files() / "logs/a.txt";
    WriteNumbers(path, "first ", 30);
    const Following follow(site, {"follow", "--file", path, "-n", "1"});
    ASSERT_TRUE(follow.Shows("first 29;"));
    constexpr int kCount = 400;
    std::vector<pid_t> writers;
    for (const char* writer : {"a", "b"}) {
        writers.push_back(StartChild([&] { WriteNumbers(path, writer, kCount); }));
    }
    for (const pid_t writer : writers) EXPECT_EQ(WaitForChild(writer), Child::Finished);
    EXPECT_TRUE(follow.Shows("a" + std::to_string(kCount - 1) + ";"));
    EXPECT_TRUE(follow.Shows("b" + std::to_string(kCount - 1) + ";"));
    const std::string output = follow.Output();
    EXPECT_EQ(std::count(output.begin(), output.end(), ';'), 2 * kCount + 1);
    for (int number = 0; number < kCount; ++number) {
        for (const char* writer : {" a", " b"}) {
            EXPECT_THAT(output, HasSubstr(writer + std::to_string(number) + ";"));
        }
    }
}

TEST(FileQuery, FindsAnArchiveThatTakesItsOtherNameMeanwhile) {
    constexpr int kArchives = 20;
    const TempDir dir;
    const std::string path = dir.Write("a.txt", Line(1, "A [INFO] end"));
    for (int number = 1; number <= kArchives; ++number) {
        dir.Write("a.txt." + std::to_string(number), Line(0, "A [INFO] archive"));
    }
    fs::create_symlink("nowhere", path + ".99");
    const pid_t renaming = StartChild([&] {
        for (int step = 0; step < 600; ++step) {
            const std::string plain = path + "." + std::to_string(step / 2 % kArchives + 1);
            const std::string packed = plain + ".gz";
            fs::rename(step % 2 == 0 ? plain : packed, step % 2 == 0 ? packed : plain);
            usleep(500);
        }
    });
    int incomplete = 0;
    while (waitpid(renaming, nullptr, WNOHANG) == 0) incomplete += OpenLogFiles(path).size() != kArchives + 1;
    EXPECT_EQ(incomplete, 0);
}

TEST(FileQuery, FollowsADatabaseToo) {
    const OperatorSite site;
    site.Store({{.timestamp = kEntryTime, .level = 3, .message = "old"}});
    const Following follow(site, {"follow", "--db", site.Database(), "--module", "SOAP"});
    ASSERT_TRUE(follow.Shows("old\n"));
    site.Store({{.timestamp = kEntryTime - 9, .level = 3, .message = "new"}});
    EXPECT_TRUE(follow.Shows("new\n"));
}
