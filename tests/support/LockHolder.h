#pragma once

#include <signal.h>
#include <unistd.h>

#include <stdexcept>

#include "LockFile.h"
#include "tests/support/ChildProcess.h"

namespace quorbel {

/// A process that holds the lock of a file from construction until the object goes.
class LockHolder {
public:
    explicit LockHolder(const std::string& path) {
        int ready[2];
        if (pipe(ready) != 0) throw std::runtime_error("no pipe");
        child_ = StartChild([&] {
            const LockFile lock(path);
            close(ready[1]);
            for (;;) pause();
        });
        close(ready[1]);
        char none;
        while (read(ready[0], &none, 1) > 0) {
        }
        close(ready[0]);
    }
    ~LockHolder() {
        kill(child_, SIGKILL);
        WaitForChild(child_);
    }

    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

private:
    pid_t child_ = 0;
};

}  // namespace quorbel
