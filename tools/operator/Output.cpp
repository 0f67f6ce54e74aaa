#include "tools/operator/Output.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "CVException.h"
#include "tools/operator/ProgressLine.h"
#include "tools/operator/Text.h"

extern char** environ;

namespace quorbel {

namespace {

// There is one standard output.
struct State {
    const bool onTerminal = isatty(STDOUT_FILENO) == 1;
    bool colours = false;
    bool pagerWanted = false;
    pid_t pager = 0;
};

State& Now() {
    static State state;
    return state;
}

// Quits when all fits on the screen, shows colours, and leaves the text on the screen, as git's does.
void SetPagerDefaults() {
    setenv("LESS", "FRX", /*overwrite=*/0);
}

// Gives the process id; 0 when there is no pager.
pid_t StartPager(int input) {
    const char* chosen = std::getenv("PAGER");
    if (chosen != nullptr && (*chosen == '\0' || std::string_view(chosen) == "cat")) return 0;
    SetPagerDefaults();
    std::array<const char*, 4> command = {"less", nullptr};
    if (chosen != nullptr) command = {"/bin/sh", "-c", chosen, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    pid_t pager = 0;
    const int failed = posix_spawnp(&pager, command[0], &actions, nullptr,
                                    const_cast<char* const*>(command.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed == 0 ? pager : 0;
}

void PrintThroughPager() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
    Now().pager = StartPager(ends[0]);
    if (Now().pager != 0) dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
}

[[noreturn]] void FailToPrint() {
    throw std::runtime_error("cannot write to standard output: " + GetSystemErrorText());
}

void Write(std::string_view text) {
    HideProgress();
    if (Now().pagerWanted) {
        Now().pagerWanted = false;
        PrintThroughPager();
    }
    if (text.empty()) return;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) FailToPrint();
}

void WriteSafely(std::string_view text) {
    Write(Now().onTerminal ? Visible(text) : text);
}

}  // namespace

void PrintLine(std::string_view line, std::string_view colour) {
    if (!Now().colours || colour.empty()) {
        WriteSafely(line);
        Write("\n");
        return;
    }
    Write("\x1b[" + std::string(colour) + "m");
    WriteSafely(line);
    Write("\x1b[0m\n");
}

void PrintFields(const std::vector<std::string>& fields) {
    std::string_view separator;
    for (const auto& field : fields) {
        Write(separator);
        WriteSafely(field);
        separator = "\t";
    }
    Write("\n");
}

void UseColours() {
    Now().colours = true;
}

void UsePager() {
    Now().pagerWanted = Now().onTerminal;
}

bool PrintsToTerminal() {
    return Now().onTerminal;
}

void FlushOutput() {
    HideProgress();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) FailToPrint();
}

void FinishOutput() noexcept {
    HideProgress();
    std::fflush(stdout);
    if (Now().pager == 0) return;
    close(STDOUT_FILENO);  // tells the pager that this is all
    waitpid(Now().pager, nullptr, 0);
    Now().pager = 0;
}

}  // namespace quorbel
