#pragma once

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "src/ThreadSignals.h"

namespace quorbel {

/// What a thread object shares with the thread it started. It outlives both.
///
/// A detached thread's handle is valid only until the thread ends, and the system does not notice the use of
/// one that is not. So the thread sets `state` to kEnded under `mutex`, and whoever uses the handle holds the
/// mutex and looks at the state first.
struct ThreadControl {
    static constexpr int kRunning = 0;
    static constexpr int kEnded = -1;

    std::mutex mutex;
    std::condition_variable ended;
    std::atomic<int> state{kEnded};
    pthread_t handle{};
    std::atomic<int> kernelId{0};

    std::atomic_flag suspendWanted;  // the flags are read by signal handlers
    std::atomic_flag killed;

    bool IsAlive() const { return state != kEnded; }
};

/// Holds a control block. The holder's own suspension waits until it lets go: otherwise nobody could resume
/// it.
class ControlLock {
public:
    explicit ControlLock(ThreadControl& control) : lock_(control.mutex) {}

    std::unique_lock<std::mutex>& Lock() { return lock_; }

private:
    ThreadSignalsBlocked blocked_;  // before the lock, so that it ends after it
    std::unique_lock<std::mutex> lock_;
};

}  // namespace quorbel
