#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

TEST(StandinProgram, ServesUntilASignalEndsIt) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const TempDir dir;
        const std::string portFile = dir / "port";
        const pid_t pid = StartChild([&] {
            if (std::freopen((dir / "out").c_str(), "w", stdout) == nullptr) return;
            execl(STANDIN_PROGRAM, "paging-standin", "--port-file", portFile.c_str(), nullptr);
        });
        while (!std::filesystem::exists(portFile)) usleep(1000);
        httplib::Client client("127.0.0.1", std::stoi(ReadFile(portFile)));
        const auto answer =
            client.Post("/", "cmd=Cli&subcmd=querygroup", "application/x-www-form-urlencoded");
        kill(pid, signal);
        EXPECT_EQ(WaitForChild(pid), Child::Finished);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->body, "OK 0 found\r\n");
        EXPECT_THAT(ReadFile(dir / "out"), testing::HasSubstr("no paging server"));
        EXPECT_THAT(ReadFile(dir / "out"), testing::EndsWith("  subcmd=querygroup\n  -> OK 0 found\n"));
    }
}

TEST(StandinProgram, TellsWrongUsageFromFailure) {
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{"--help"}, 0},
        {{"--version"}, 0},
        {{"--prot", "1"}, 2},
        {{"--port", "70000"}, 2},
        {{"--status", "99"}, 2},
        {{"--reply", "/nowhere/file"}, 2},
        {{"--port-file", "/nowhere/file"}, 1},
    };
    for (const auto& [arguments, status] : cases) {
        EXPECT_EQ(RunProgram({.program = STANDIN_PROGRAM, .arguments = arguments}).exitStatus, status)
            << arguments.front();
    }
}
