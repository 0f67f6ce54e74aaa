#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "ProcessMark.h"

namespace quorbel {

class LockedPath;

/// How long a LockFile keeps trying: this many attempts, each lasting `pause`.
///
/// Within an attempt the lock is probed several times, first at short distances, so that a short wait costs
/// little. An attempt with no pause is a single probe.
struct LockRetry {
    int attempts = 2000;
    std::chrono::milliseconds pause{30};
    /// Waits between two probes; null sleeps. May throw, which ends the attempts.
    std::function<void(std::chrono::microseconds)> sleep;
};

}  // namespace quorbel

/// Holds the write lock that keeps other processes and threads out of one log file, for the object's
/// lifetime.
///
/// The file stays open for the next lock on it. The kernel ties such a lock to the process, and closing any
/// other descriptor of the same file drops it: nothing else may open `path`. Threads are kept out by a
/// process-wide table of the paths that are locked; a second object for the same path waits even in the same
/// thread. A child process does not hold the locks of its parent: there the object does nothing more. A crash
/// releases the lock; the file stays behind and does no harm. The file may be deleted at any time by
/// RemoveDeadLockFiles: a lock counts only while the path still names the locked file.
class LockFile {
public:
    /// Throws CVException "LockFile Creation Failed" after the last attempt, and at once when waiting cannot
    /// help: no rights, no such directory, a full disk.
    explicit LockFile(const std::string& path, const quorbel::LockRetry& retry = {});
    ~LockFile();

    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    bool IsHeld() const { return process_.IsOurs(); }

private:
    quorbel::LockedPath* path_;
    quorbel::ProcessMark process_;
};

namespace quorbel {

/// False when a LockFile on `path` would fail at once; one that is merely taken is usable. Creates the file
/// like LockFile and takes the lock for a moment when it is free.
bool IsLockUsable(const std::string& path);

/// Deletes the empty files "*.lock" in `directory` that no process holds, as processes that died leave them
/// behind. A file that cannot be opened or deleted stays, and so do those that this process has locked before:
/// it would make them anew. Throws CVioException when the directory
/// cannot be listed.
void RemoveDeadLockFiles(const std::string& directory);

}  // namespace quorbel
