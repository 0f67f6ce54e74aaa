#include "tests/system/ResidentProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "tests/support/Eventually.h"
#include "tests/support/ScgiClient.h"
#include "tests/system/FrontEnd.h"

namespace quorbel {

namespace fs = std::filesystem;

namespace {

/// The process number is known in the new process only.
constexpr char kHandOver[] = "exec 3<&0 0</dev/null; LISTEN_PID=$$ LISTEN_FDS=1 exec \"$@\"";

pid_t Start(std::vector<std::string> words, int listening, const std::string& messages) {
    if (listening >= 0) words.insert(words.begin(), {"/bin/sh", "-c", kHandOver, "sh"});
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, messages.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     0600);
    if (listening >= 0) posix_spawn_file_actions_adddup2(&actions, listening, STDIN_FILENO);
    char* environment[] = {nullptr};
    pid_t pid = -1;
    EXPECT_EQ(posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environment), 0);
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

std::string ProcessFile(pid_t pid, const char* name) {
    return ReadFile("/proc/" + std::to_string(pid) + "/" + name);
}

}  // namespace

ResidentProgram::ResidentProgram(const std::string& site, const std::vector<std::string>& options,
                                 int listening, const std::string& program) {
    std::vector<std::string> words = {program, "--site", site, "--socket", Socket()};
    words.insert(words.end(), options.begin(), options.end());
    pid_ = Start(words, listening, files_ / "messages");
    EXPECT_TRUE(Eventually([&] { return !Workers().empty(); })) << Messages();
}

ResidentProgram::~ResidentProgram() {
    if (pid_ > 0) {
        EXPECT_EQ(Stop(), 0) << Messages();
    }
}

std::string ResidentProgram::Ask(const std::string& body, const std::vector<std::string>& variables) const {
    ProgramResult result;
    result.output = AskByScgi(Socket(), body, variables);
    return BodyOf(result);
}

std::vector<pid_t> ResidentProgram::Workers() const {
    const std::string task = std::to_string(pid_);
    std::istringstream children(ProcessFile(pid_, ("task/" + task + "/children").c_str()));
    return {std::istream_iterator<pid_t>(children), {}};
}

bool ResidentProgram::HasZombie() const {
    const auto workers = Workers();
    return std::any_of(workers.begin(), workers.end(), [](pid_t pid) { return ProcessState(pid) == 'Z'; });
}

std::size_t ResidentProgram::Descriptors() const {
    const fs::directory_iterator entries("/proc/" + std::to_string(pid_) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::string ResidentProgram::Messages() const {
    return ReadFile(files_ / "messages");
}

int ResidentProgram::Stop() {
    int status = 0;
    kill(pid_, SIGTERM);
    const bool ended = Eventually([&] { return waitpid(pid_, &status, WNOHANG) == pid_; });
    if (!ended) {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
    }
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

char ProcessState(pid_t pid) {
    const std::string stat = ProcessFile(pid, "stat");
    const std::size_t end = stat.rfind(')');  // of the name, which may hold anything
    return end == stat.npos || end + 2 >= stat.size() ? '\0' : stat[end + 2];
}

}  // namespace quorbel
