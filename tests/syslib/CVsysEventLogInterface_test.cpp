#include "syslib/CVsysEventLogInterface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <regex>

#include "syslib/SocketTrace.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

// A site whose logging configuration is `ini`, in which "@" stands for the site's directory.
class Site {
public:
    explicit Site(const std::string& ini) {
        dir_.Write("config/cvlogs.ini", std::regex_replace(ini, std::regex("@"), dir_.Path()));
        dir_.Write("file", "");
        TakeSystemLog();
    }
    std::unique_ptr<CVsysEventLogInterface> Create(const std::string& module = "SOAP") const {
        return CVsysEventLogInterface::Create(module, LogThreading::Single, dir_ / "config");
    }
    std::string Read(const std::string& name) const { return ReadFile(dir_ / name); }

private:
    TempDir dir_;
};

const std::string kTracing = "[SOAP]\nlevel=trace\nfilePath=@/soap_log.txt\nautoAppend=1\n";

std::string TextThrownBy(const std::function<void()>& call) {
    try {
        call();
        return "nothing thrown";
    } catch (const char* text) {
        return text;
    }
}

int VLogInfo(CVsysEventLogInterface& log, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = log.VLog(LogLevel::Info, "Send", format, arguments);
    va_end(arguments);
    return result;
}

}  // namespace

TEST(CVsysEventLogInterface, WritesWhatItsLevelAsksFor) {
    const Site site("[SOAP]\nlevel=warn\nfilePath=@/soap_log.txt\nautoAppend=1\n");
    const auto log = site.Create();
    ASSERT_TRUE(log && log->IsReady());
    EXPECT_EQ(log->Trace("Send", "t"), 0);
    EXPECT_EQ(log->Info(nullptr, "i"), 0);
    EXPECT_EQ(log->LogByCode(19, nullptr, "information"), 0);
    EXPECT_EQ(site.Read("soap_log.txt"), "");
    EXPECT_EQ(log->Warn("Send", "id=%d", 7), 1);
    EXPECT_EQ(log->LogByCode(17, "", "code"), 1);
    log->SetThreshold(LogLevel::Critical);
    EXPECT_EQ(log->Error(nullptr, "e"), 0);
    EXPECT_EQ(log->Fatal(nullptr, "f"), 1);
    EXPECT_EQ(log->Write(LogLevel::Error, "e", -1, nullptr), 0) << "a finished message passes the same door";
    log->SetThreshold(LogLevel::None);
    EXPECT_EQ(log->Fatal(nullptr, "silent"), 0);
    log->SetThreshold(LogLevel::Info);
    EXPECT_EQ(VLogInfo(*log, "again %d", 1), 1);
    log->SetEnabled(false);
    EXPECT_EQ(log->Write(LogLevel::Fatal, "disabled", -1, nullptr), 0);
    EXPECT_THAT(site.Read("soap_log.txt"),
                MatchesRegex(
                    "[^[]+ SOAP \\[WARN\\] Send id=7\n[^[]+ SOAP \\[ERROR\\] code\n[^[]+ SOAP \\[FATAL\\] f\n"
                    "[^[]+ SOAP \\[INFO\\] Send again 1\n"));
}

TEST(CVsysEventLogInterface, TellsTheCallersErrorAndLeavesItInPlace) {
    const Site site(kTracing);
    const auto log = site.Create();
    errno = ENOENT;
    EXPECT_EQ(log->ErrorSystem("Open", "%s", "x"), 1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(log->Trace(nullptr, "%s", "y"), 1);
    EXPECT_EQ(errno, ENOENT) << "writing an entry changes nothing for its caller";
    EXPECT_THAT(site.Read("soap_log.txt"),
                HasSubstr("[ERROR] Open x [System Library Error] " + std::string(strerror(ENOENT)) + "\n"));
}

TEST(CVsysEventLogInterface, AddsTheThreadIdToCutAndToFinishedMessages) {
    const Site site(kTracing);
    const auto log = site.Create();
    log->SetThreadIdShown(true);
    EXPECT_EQ(log->Trace(nullptr, "%s\n", std::string(70000, 'b').c_str()), 1);
    EXPECT_THAT(site.Read("soap_log.txt"), testing::EndsWith("[TRACE] [TID:" + std::to_string(gettid()) +
                                                             "] " + std::string(2047, 'b') + "\n"));
    EXPECT_EQ(log->Write(LogLevel::Info, "done", -1, nullptr), 1);
    EXPECT_THAT(site.Read("soap_log.txt"), HasSubstr("[INFO] [TID:" + std::to_string(gettid()) + "] done"));
}

TEST(CVsysEventLogInterface, TakesTheBytesOfASocketAtLevelTraceOnly) {
    const Site site(kTracing);
    const auto log = site.Create();
    const auto trace = TraceTo(*log);
    trace("<= %s", "QUIT %n\r\n");
    log->SetThreshold(LogLevel::Debug);
    trace("=> %s", "hidden");
    EXPECT_THAT(site.Read("soap_log.txt"),
                MatchesRegex("[^\n]+ SOAP \\[TRACE\\] CVioSocket <= QUIT %n<CR><LF>\n"));
}

TEST(CVsysEventLogInterface, AddsItsSectionAndWritesToTheDefaultDirectory) {
    EXPECT_EQ(
        InChildProcess([] {  // the default directory holds for the whole process
            const TempDir dir;
            CVsysEventLogInterface::SetDefaultLogDirectory(dir.Path());
            const auto log =
                CVsysEventLogInterface::Create("Email Gateway", LogThreading::Single, dir.Path());
            if (!log || log->Info(nullptr, "up") != 1) throw 0;
            if (ReadFile(dir / "email_gateway_log.txt").empty()) throw 0;
            if (ReadFile(dir / "cvlogs.ini").find("[Email Gateway]\nwriter=file\n") == std::string::npos)
                throw 0;
        }),
        Child::Finished);
}

TEST(CVsysEventLogInterface, IsFoundByItsExactNameUntilItIsGone) {
    const Site site("[SOAP]\nfilePath=@/a\n[CLI]\nfilePath=@/b\n");
    auto soap = site.Create("SOAP");
    const auto cli = site.Create("CLI");
    EXPECT_EQ(CVsysEventLogInterface::GetInstance(), soap.get()) << "the first one is the default";
    EXPECT_EQ(CVsysEventLogInterface::GetInstance("CLI"), cli.get());
    EXPECT_EQ(TextThrownBy([] { CVsysEventLogInterface::GetInstance("soap"); }),
              "CVsysEventLogInterface object for module [soap] is called before creation.");

    soap.reset();
    EXPECT_EQ(TextThrownBy([] { CVsysEventLogInterface::GetInstance("SOAP", -1, "CVsoap"); }),
              "CVsysEventLogInterface object for module [SOAP] is called before creation.");
    EXPECT_EQ(TextThrownBy([] { CVsysEventLogInterface::GetInstance(); }),
              "CVsysEventLogInterface object is called before creation.");
    soap = site.Create("SOAP");
    EXPECT_EQ(CVsysEventLogInterface::GetInstance("SOAP"), soap.get());
    EXPECT_EQ(CVsysEventLogInterface::GetInstance(), soap.get());
}

TEST(CVsysEventLogInterface, TellsTheSystemLogOfAUseBeforeCreation) {
    TakeSystemLog();
    TextThrownBy([] { CVsysEventLogInterface::GetInstance("100%s", 3, "main"); });
    TextThrownBy([] { CVsysEventLogInterface::GetInstance(3, "main"); });
    const auto entries = TakeSystemLog();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].identity, "100%s");
    EXPECT_THAT(entries[0].text,
                testing::EndsWith("CVsysEventLogInterface::GetInstance(): CVsysEventLogInterface object "
                                  "for module [100%s] is called before creation @ line [3] in file "
                                  "[main]."));
    EXPECT_EQ(entries[1].identity, program_invocation_short_name);
}

TEST(CVsysEventLogInterface, TellsWhyThereIsNoUsableLog) {
    enum class Result { None, NotReady };
    const struct {
        const char* ini;
        Result result;
        const char* text;
    } cases[] = {
        {"[SOAP]\nfilePath=@/missing/l\n", Result::NotReady,
         "Log writer initialization failed. Check cvlogs.ini"},
        {"[SOAP]\nfilePath=@/file/l\n", Result::NotReady,
         "Log writer initialization failed. Check cvlogs.ini"},
        {"[SOAP]\nwriter=sqlite\n", Result::NotReady, "Log writer initialization failed. Check cvlogs.ini"},
        {"[SOAP]\nwriter=tape\n", Result::None, "Error occurred while creating log writer."},
        {"[SOAP]\nwriter=common\n[common]\nwriter=Common\n", Result::None,
         "Error occurred while creating log writer."},
    };
    for (const auto& c : cases) {
        const Site site(c.ini);
        const auto log = site.Create();
        EXPECT_EQ(log == nullptr, c.result == Result::None) << c.ini;
        EXPECT_FALSE(log && (log->IsReady() || log->Fatal(nullptr, "lost") == 1)) << c.ini;
        EXPECT_THAT(
            TakeSystemLogTexts(),
            testing::Contains("SOAP-ERROR CVsysEventLogInterface::loadWriterConfig: " + std::string(c.text)));
    }
}

TEST(CVsysEventLogInterface, TellsFailuresOfTheCommonWriterUnderTheModule) {
    const Site site("[SOAP]\nwriter=common\n[common]\nfilePath=@/missing/l\n");
    const auto log = site.Create();
    EXPECT_THAT(TakeSystemLogTexts(),
                testing::Contains(testing::StartsWith("SOAP-ERROR CVsysEventLogInterface::setFilePath: ")));
}

TEST(CVsysEventLogInterface, FindsARelativeConfigurationAfterAChangeOfDirectory) {
    const TempDir dir;
    dir.Write("config/cvlogs.ini", "[M]\nfilePath=" + dir.Path() + "/m.txt\n[N]\nwriter=file\n");
    dir.Write("logs/n_log.txt", "");
    const auto logsFromElsewhere = [&](const char* module, bool startsThere) {
        if (chdir(dir.Path().c_str()) != 0) throw 0;
        const auto log = CVsysEventLogInterface::Create(module, LogThreading::Multi, "config");
        if ((!startsThere && !log->Start()) || chdir("/") != 0) throw 0;
        if ((startsThere && !log->Start()) || log->Info(nullptr, "found") != 1) throw 0;
    };
    EXPECT_EQ(InChildProcess([&] { logsFromElsewhere("M", true); }), Child::Finished);
    EXPECT_EQ(InChildProcess([&] { logsFromElsewhere("N", false); }), Child::Finished);
    EXPECT_THAT(ReadFile(dir / "m.txt"), HasSubstr("found"));
    EXPECT_THAT(ReadFile(dir / "logs/n_log.txt"), HasSubstr("found")) << "its place is relative, too";
}

TEST(CVsysEventLogInterface, TellsThatTheConfigurationCannotBeRead) {
    const TempDir dir;
    dir.Write("cvlogs.ini/entry", "");
    TakeSystemLog();
    for (const std::string& directory : {dir.Path(), std::string()}) {
        EXPECT_EQ(CVsysEventLogInterface::Create("SOAP", LogThreading::Single, directory), nullptr);
        EXPECT_THAT(TakeSystemLogTexts(), ElementsAre("SOAP-ERROR CVsysEventLogInterface::loadWriterConfig: "
                                                      "Unable to load/read config/cvlogs.ini file."));
    }
}

TEST(CVsysEventLogInterface, SharesTheCommonWriterBetweenModulesThatKeepTheirLevels) {
    EXPECT_EQ(
        InChildProcess([] {  // the shared writer lives as long as its process
            const Site site(
                "[SOAP]\nwriter=common\nlevel=error\n[CLI]\nwriter=COMMON\n"
                "[common]\nfilePath=@/common_logs.txt\nautoAppend=1\nlevel=fatal\n");
            const auto soap = site.Create("SOAP");
            const auto cli = site.Create("CLI");
            if (soap->Info(nullptr, "hidden") != 0 || soap->Error(nullptr, "one") != 1) throw 0;
            soap->Stop();
            if (cli->Info(nullptr, "two") != 1) throw 0;
            const std::string file = site.Read("common_logs.txt");
            if (!testing::Value(file, MatchesRegex("[^[]+ SOAP \\[ERROR\\] one\n[^[]+ CLI \\[INFO\\] two\n")))
                throw 0;
        }),
        Child::Finished);
}

TEST(CVsysEventLogInterface, WritesToADatabaseForSqlite) {
    const Site site("[SOAP]\nwriter=SQLite\ndbfilename=@/logs.sdb\n");
    auto log = site.Create();
    ASSERT_TRUE(log && log->IsReady());
    EXPECT_EQ(log->Info("Send", "stored"), 1);
    log.reset();  // the last connection moves its entries into the file itself
    EXPECT_NE(site.Read("logs.sdb").find("Send stored"), std::string::npos);
    EXPECT_EQ(site.Read("soap_log.txt"), "");
}

TEST(CVsysEventLogInterface, WritesToStandardErrorForQtdebug) {
    const Site site("[SOAP]\nwriter=qtdebug\n");
    const auto log = site.Create();
    ASSERT_TRUE(log->IsReady());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(log->Info("Send", "one"), 1);
    EXPECT_EQ(log->Info("Send", "two\n"), 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                MatchesRegex("[^[]+ SOAP \\[INFO\\] Send one\n[^[]+ SOAP \\[INFO\\] Send two\n"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "that is the answer to the client";
}

TEST(CVsysEventLogInterface, WritesNothingOnceStoppedButStaysFound) {
    const Site site(kTracing);
    const auto log = site.Create();
    EXPECT_EQ(log->Info(nullptr, "one"), 1);
    log->Stop();
    EXPECT_EQ(log->Info(nullptr, "two"), 0);
    log->SetEnabled(true);
    EXPECT_EQ(log->Info(nullptr, "three"), 0);
    EXPECT_FALSE(log->Start()) << "a stopped log is not restarted";
    EXPECT_EQ(CVsysEventLogInterface::GetInstance("SOAP"), log.get());
    EXPECT_THAT(site.Read("soap_log.txt"), MatchesRegex("[^\n]+one\n"));
}
