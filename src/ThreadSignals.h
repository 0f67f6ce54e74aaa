#pragma once

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <mutex>

#include "ProcessMark.h"

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

    std::atomic_flag suspendWanted;  // signal handlers use the flags
    std::atomic_flag paused;
    std::atomic_flag killed;
    std::atomic_flag asked[3];  // by role: whether a request was ever sent to this thread

    ProcessMark process;

    /// Not in a child process: a fork carries over the calling thread alone.
    bool IsAlive() const { return state != kEnded && process.IsOurs(); }
};

// The three signals by which threads are paused, resumed and ended: SIGUSR1, SIGUSR2 and SIGQUIT unless others
// are chosen for the first two.

/// Before the handlers are installed; 0, EBUSY afterwards, EINVAL for signals that cannot be used.
int ChooseThreadSignals(int suspend, int resume);

/// Installs the handlers; 0 or an error code, in which case a later call tries again.
/// A signal that no request of ours brought is given to the handler that was there before; a SIGQUIT that had
/// none ends the process.
int InstallThreadSignals();

/// Binds the handlers to the calling thread's control block and lets the signals in.
void EnterThreadSignals(ThreadControl& control);
/// From here on no signal reaches the calling thread.
void LeaveThreadSignals();
/// The calling thread's control block; null outside EnterThreadSignals and LeaveThreadSignals.
ThreadControl* CurrentThreadControl();

// With the mutex of a living thread's control block held; 0 or an error code.
int SendSuspend(ThreadControl& control);
int SendResume(ThreadControl& control);
int SendKill(ThreadControl& control);

/// Holds the three signals back from the calling thread in its scope.
class ThreadSignalsBlocked {
public:
    ThreadSignalsBlocked();
    ~ThreadSignalsBlocked();

    ThreadSignalsBlocked(const ThreadSignalsBlocked&) = delete;
    ThreadSignalsBlocked& operator=(const ThreadSignalsBlocked&) = delete;

private:
    sigset_t before_;
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
