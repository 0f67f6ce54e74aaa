#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

/// Starts the program with its output in `output`; returns its process id.
pid_t Start(std::vector<std::string> arguments, const std::string& output) {
    std::vector<char*> argv{const_cast<char*>("paging-standin")};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid != 0) return pid;
    if (std::freopen(output.c_str(), "w", stdout) == nullptr) _exit(126);
    if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(126);
    execv(STANDIN_PROGRAM, argv.data());
    _exit(127);
}

int ExitStatus(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

TEST(StandinProgram, ServesUntilASignalEndsIt) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const TempDir dir;
        const pid_t pid = Start({"--port-file", dir / "port"}, dir / "out");
        while (!std::filesystem::exists(dir / "port")) usleep(1000);
        httplib::Client client("127.0.0.1", std::stoi(ReadFile(dir / "port")));
        const auto answer =
            client.Post("/", "cmd=Cli&subcmd=querygroup", "application/x-www-form-urlencoded");
        kill(pid, signal);
        EXPECT_EQ(ExitStatus(pid), 0);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->body, "OK 0 found\r\n");
        EXPECT_THAT(ReadFile(dir / "out"), testing::HasSubstr("no paging server"));
        EXPECT_THAT(ReadFile(dir / "out"), testing::EndsWith("  subcmd=querygroup\n  -> OK 0 found\n"));
    }
}

TEST(StandinProgram, TellsWrongUsageFromFailure) {
    const TempDir dir;
    const struct {
        std::vector<std::string> arguments;
        int status;
    } cases[] = {
        {{"--help"}, 0},
        {{"--version"}, 0},
        {{"--prot", "1"}, 2},
        {{"--port", "70000"}, 2},
        {{"--status", "99"}, 2},
        {{"--reply", "/nowhere/file"}, 2},
        {{"--port-file", "/nowhere/file"}, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ExitStatus(Start(c.arguments, dir / "out")), c.status) << c.arguments.front();
    }
}
