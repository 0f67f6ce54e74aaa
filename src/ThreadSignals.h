#pragma once

#include <csignal>

namespace quorbel {

struct ThreadControl;

// The three signals by which threads are paused, resumed and ended: SIGUSR1, SIGUSR2 and SIGQUIT.

/// Installs their handlers; 0 or an error code, in which case a later call tries again.
/// They do nothing to a thread that was not asked to pause or killed, except that a SIGQUIT from outside the
/// process has the effect it had before.
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

/// How many threads of the process are paused at this moment.
int SuspendedThreads();

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

}  // namespace quorbel
