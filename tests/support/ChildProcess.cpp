#include "tests/support/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace quorbel {

namespace {

constexpr int kThrew = 101;

}  // namespace

pid_t StartChild(const std::function<void()>& body) {
    const pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid > 0) return pid;
    try {
        body();
    } catch (...) {
        _exit(kThrew);
    }
    _exit(0);
}

Child WaitForChild(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return Child::Finished;
    return WIFEXITED(status) && WEXITSTATUS(status) == kThrew ? Child::Threw : Child::Crashed;
}

Child InChildProcess(const std::function<void()>& body) {
    return WaitForChild(StartChild(body));
}

}  // namespace quorbel
