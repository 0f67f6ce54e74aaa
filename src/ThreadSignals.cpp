#include "src/ThreadSignals.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace quorbel {

namespace {

constexpr int kSignals[] = {SIGUSR1, SIGUSR2, SIGQUIT};
constexpr std::size_t kKernelSetSize = _NSIG / 8;

constinit thread_local ThreadControl* currentControl = nullptr;
sigset_t allButResume;        // what a paused thread does not wait for
struct sigaction quitBefore;  // what a SIGQUIT did before there were threads

sigset_t ThreadSignalSet() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals) sigaddset(&set, signal);
    return set;
}

/// Unlike sigfillset this covers the signal that carries cancellation, so that none begins to unwind from
/// within a handler.
sigset_t EverySignal() {
    sigset_t set;
    std::memset(&set, 0xFF, sizeof set);
    return set;
}

// The handlers are not instrumented: the thread sanitizer works off its backlog of signals at atomic
// operations, and cancellation would come in while it does.

extern "C" [[gnu::no_sanitize_thread]] void PauseWhileSuspended(int) noexcept {
    ThreadControl* control = currentControl;
    if (control == nullptr || !control->suspendWanted.test()) return;
    const int saved = errno;
    control->paused.test_and_set();
    // The system call and not the library's function, which is a cancellation point.
    while (control->suspendWanted.test() && !control->killed.test()) {
        syscall(SYS_rt_sigsuspend, &allButResume, kKernelSetSize);
    }
    control->paused.clear();
    errno = saved;
}

extern "C" void EndWaitInPause(int) noexcept {}

/// An operator's SIGQUIT ends the process as if there were no threads of ours.
extern "C" [[gnu::no_sanitize_thread]] void PassOnUnlessKilled(int, siginfo_t* info, void*) noexcept {
    const bool sentByKill =
        currentControl != nullptr && currentControl->killed.test() && info->si_code == SI_TKILL;
    if (sentByKill) return;
    const int saved = errno;
    sigaction(SIGQUIT, &quitBefore, nullptr);
    raise(SIGQUIT);  // pending until this handler returns
    errno = saved;
}

struct sigaction Restarting() {
    struct sigaction action = {};
    action.sa_mask = EverySignal();
    action.sa_flags = SA_RESTART;
    return action;
}

int Install() {
    allButResume = EverySignal();
    sigdelset(&allButResume, SIGUSR2);
    struct sigaction action = Restarting();
    action.sa_handler = PauseWhileSuspended;
    if (sigaction(SIGUSR1, &action, nullptr) != 0) return errno;
    action.sa_handler = EndWaitInPause;
    if (sigaction(SIGUSR2, &action, nullptr) != 0) return errno;
    action.sa_sigaction = PassOnUnlessKilled;
    action.sa_flags |= SA_SIGINFO;
    // Last, so that a repeated attempt never takes this handler for the one before.
    return sigaction(SIGQUIT, &action, &quitBefore) == 0 ? 0 : errno;
}

}  // namespace

int InstallThreadSignals() {
    static std::mutex mutex;
    static bool installed = false;
    const std::lock_guard guard(mutex);
    const int code = installed ? 0 : Install();
    installed = code == 0;
    return code;
}

void EnterThreadSignals(ThreadControl& control) {
    currentControl = &control;
    const sigset_t signals = ThreadSignalSet();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void LeaveThreadSignals() {
    const sigset_t signals = ThreadSignalSet();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    currentControl = nullptr;
}

ThreadControl* CurrentThreadControl() {
    return currentControl;
}

int SendSuspend(ThreadControl& control) {
    static std::mutex oneAtATime;
    const std::lock_guard guard(oneAtATime);
    control.suspendWanted.test_and_set();
    return pthread_kill(control.handle, SIGUSR1);
}

int SendResume(ThreadControl& control) {
    control.suspendWanted.clear();
    if (const int code = pthread_kill(control.handle, SIGUSR1); code != 0) return code;
    return pthread_kill(control.handle, SIGUSR2);
}

int SendKill(ThreadControl& control) {
    control.killed.test_and_set();
    pthread_kill(control.handle, SIGUSR2);  // a suspended thread must go on to end
    if (const int code = pthread_kill(control.handle, SIGQUIT); code != 0) return code;
    return pthread_cancel(control.handle);
}

ThreadSignalsBlocked::ThreadSignalsBlocked() {
    const sigset_t signals = ThreadSignalSet();
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

ThreadSignalsBlocked::~ThreadSignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace quorbel
