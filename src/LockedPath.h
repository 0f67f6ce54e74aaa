#pragma once

#include <sys/types.h>

#include <atomic>
#include <string>

namespace quorbel {

/// Whether this process holds the lock of one path: the kernel's file locks do not tell its threads apart.
///
/// There is one object for each file, whatever its path's spelling, and it lives until the process ends: a
/// detached thread may still log while static objects are destroyed.
class LockedPath {
public:
    static LockedPath& Of(const std::string& path);

    /// True when nobody held it; it is this caller's then, until Free. Never waits.
    bool TryTake();
    void Free();

private:
    std::atomic<pid_t> holder_{0};
};

}  // namespace quorbel
