#include "CVsystemLog.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>

#include "tests/support/SystemLogRecorder.h"

using namespace quorbel;

namespace {

std::string OnlyText() {
    const auto entries = TakeSystemLog();
    return entries.size() == 1 ? entries.front().text : "not one entry";
}

}  // namespace

TEST(CVsystemLog, WritesOneDaemonEntryWithTheProcessId) {
    TakeSystemLog();
    EXPECT_NE(CVsystemLog::WriteError("CVunit::Work()", "SOAP", "lost %d of %s", 3, "them"), 0);
    EXPECT_NE(CVsystemLog::WriteInfo("CVunit::Work()", "SOAP", "found"), 0);

    const auto entries = TakeSystemLog();
    ASSERT_EQ(entries.size(), 2U);
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.identity, "SOAP");
        EXPECT_EQ(entry.option, LOG_PID);
        EXPECT_EQ(entry.facility, LOG_DAEMON);
    }
    EXPECT_EQ(entries[0].priority, LOG_ERR);
    EXPECT_EQ(entries[0].text, "SOAP-ERROR CVunit::Work(): lost 3 of them");
    EXPECT_EQ(entries[1].priority, LOG_INFO);
    EXPECT_EQ(entries[1].text, "SOAP-ERROR CVunit::Work(): found");
}

TEST(CVsystemLog, InterpretsNoConversionButTheTwoThatTakeNoArgument) {
    const std::pair<const char*, std::string> cases[] = {
        {"%n%s%s%*d", "%n%s%s%*d"},
        {"50%% of 10%", "50% of 10%"},
        {"why: %m", std::string("why: ") + std::strerror(ENOSPC)},
        {"%%m", "%m"},
    };
    for (const auto& [message, text] : cases) {
        errno = ENOSPC;
        CVsystemLog::WriteError("S", "I", "%s", message);
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_EQ(OnlyText(), "I-ERROR S: " + text);
    }
}

TEST(CVsystemLog, NamesTheProgramWhenThereIsNoIdentity) {
    for (const char* identity : {static_cast<const char*>(nullptr), ""}) {
        CVsystemLog::WriteError("S", identity, "m");
        EXPECT_EQ(OnlyText(), std::string(program_invocation_short_name) + "-ERROR S: m");
    }
}

TEST(CVsystemLog, KeepsTheIdentitiesOfThreadsApart) {
    const auto report = [](const std::string& identity) {
        for (int i = 0; i < 200; ++i) CVsystemLog::WriteInfo("S", identity.c_str(), "m");
    };
    std::thread other(report, "other");
    report("this");
    other.join();
    for (const auto& entry : TakeSystemLog()) EXPECT_EQ(entry.text, entry.identity + "-ERROR S: m");
}
