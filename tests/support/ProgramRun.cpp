#include "tests/support/ProgramRun.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/support/TempDir.h"

namespace quorbel {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kLongest{60};

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const auto& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// Everything the child needs, laid out before the fork: behind it another thread's lock may be held for ever, so
/// nothing may be allocated there.
struct Prepared {
    const char* program;
    const char* directory;
    std::vector<char*> arguments;
    std::vector<char*> environment;
    std::string in, out, err;
};

void Redirect(const std::string& path, int flags, int descriptor) {
    const int file = open(path.c_str(), flags, 0600);
    dup2(file, descriptor);
    close(file);
}

/// Becomes the program.
[[noreturn]] void Become(const Prepared& child) {
    Redirect(child.in, O_RDONLY, STDIN_FILENO);
    Redirect(child.out, O_WRONLY | O_CREAT, STDOUT_FILENO);
    Redirect(child.err, O_WRONLY | O_CREAT, STDERR_FILENO);
    if (chdir(child.directory) == 0) execve(child.program, child.arguments.data(), child.environment.data());
    _exit(127);
}

/// The process's peak of resident memory so far. The figure that `wait` gives is of no use: it still holds the peak
/// of this process, of which the child was a copy.
long PeakMemoryKiB(pid_t pid) {
    const std::string status = ReadFile("/proc/" + std::to_string(pid) + "/status");
    const std::size_t at = status.find("VmHWM:");
    return at == status.npos ? 0 : std::atol(status.c_str() + at + 6);
}

void Await(pid_t pid, ProgramResult& result) {
    const auto deadline = Clock::now() + kLongest;
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (const long peak = PeakMemoryKiB(pid); peak > 0) result.peakMemoryKiB = peak;
        if (!result.timedOut && Clock::now() > deadline) {
            result.timedOut = true;
            kill(pid, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ProgramResult RunProgram(const ProgramInput& input) {
    const TempDir files;
    files.Write("in", input.input);
    std::vector<std::string> words = {input.program};
    words.insert(words.end(), input.arguments.begin(), input.arguments.end());
    const Prepared child = {
        input.program.c_str(), input.directory.c_str(), Pointers(words), Pointers(input.environment),
        files / "in",          files / "out",           files / "err"};

    ProgramResult result;
    const pid_t pid = fork();
    if (pid == 0) Become(child);
    Await(pid, result);
    result.output = ReadFile(files / "out");
    result.errors = ReadFile(files / "err");
    return result;
}

}  // namespace quorbel
