#pragma once

#include <sys/types.h>

#include <functional>

namespace quorbel {

/// How a child process of a test ended.
enum class Child { Finished, Threw, Crashed };

/// Runs `body` in a forked process, for faults that only a second process shows.
/// The child ends without running the parent's destructors or exit handlers.
Child InChildProcess(const std::function<void()>& body);

/// The same without waiting: returns the process id, to be given to WaitForChild.
pid_t StartChild(const std::function<void()>& body);
Child WaitForChild(pid_t pid);

}  // namespace quorbel
