#include "src/ThreadSignals.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace quorbel {

namespace {

enum Role { kSuspend, kResume, kKill, kRoles };

int signals[kRoles] = {SIGUSR1, SIGUSR2, SIGQUIT};
struct sigaction before[kRoles];  // what the signals did before there were threads
sigset_t allButResume;            // what a paused thread does not wait for
std::mutex installing;
bool installed = false;
constexpr std::size_t kKernelSetSize = _NSIG / 8;

constinit thread_local ThreadControl* currentControl = nullptr;

sigset_t ThreadSignalSet() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) sigaddset(&set, signal);
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

/// Whether a request of ours brought the signal, and nobody else's. Once a thread was asked for something, a
/// signal of that kind which the process sends to it counts as another request.
[[gnu::no_sanitize_thread]] bool IsRequest(Role role, const siginfo_t& info) {
    return info.si_code == SI_TKILL && currentControl != nullptr && currentControl->asked[role].test();
}

/// Default and ignored signals stay without effect here.
[[gnu::no_sanitize_thread]] void CallHandlerBefore(Role role, siginfo_t* info, void* context) {
    const struct sigaction& action = before[role];
    if ((action.sa_flags & SA_SIGINFO) != 0) {
        action.sa_sigaction(info->si_signo, info, context);
    } else if (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN) {
        action.sa_handler(info->si_signo);
    }
}

extern "C" [[gnu::no_sanitize_thread]] void OnSuspend(int, siginfo_t* info, void* context) noexcept {
    const int saved = errno;
    ThreadControl* control = currentControl;
    if (!IsRequest(kSuspend, *info)) {
        CallHandlerBefore(kSuspend, info, context);
    } else if (control->suspendWanted.test()) {
        control->paused.test_and_set();
        // The system call and not the library's function, which is a cancellation point.
        while (control->suspendWanted.test() && !control->killed.test()) {
            syscall(SYS_rt_sigsuspend, &allButResume, kKernelSetSize);
        }
        control->paused.clear();
    }
    errno = saved;
}

/// Its arrival ends the wait in a pause.
extern "C" [[gnu::no_sanitize_thread]] void OnResume(int, siginfo_t* info, void* context) noexcept {
    const int saved = errno;
    if (!IsRequest(kResume, *info)) CallHandlerBefore(kResume, info, context);
    errno = saved;
}

/// An operator's SIGQUIT has the effect it has without threads of ours.
extern "C" [[gnu::no_sanitize_thread]] void OnKill(int, siginfo_t* info, void* context) noexcept {
    if (IsRequest(kKill, *info)) return;
    const int saved = errno;
    const bool isDefault = (before[kKill].sa_flags & SA_SIGINFO) == 0 && before[kKill].sa_handler == SIG_DFL;
    if (isDefault) {
        sigaction(SIGQUIT, &before[kKill], nullptr);
        raise(SIGQUIT);  // pending until this handler returns; ends the process then
    } else {
        CallHandlerBefore(kKill, info, context);
    }
    errno = saved;
}

constexpr void (*kHandlers[kRoles])(int, siginfo_t*, void*) noexcept = {OnSuspend, OnResume, OnKill};

int Install() {
    allButResume = EverySignal();
    sigdelset(&allButResume, signals[kResume]);
    struct sigaction action = {};
    action.sa_mask = EverySignal();
    action.sa_flags = SA_RESTART | SA_SIGINFO;
    for (int role = 0; role < kRoles; ++role) {
        action.sa_sigaction = kHandlers[role];
        struct sigaction old = {};
        if (sigaction(signals[role], &action, &old) != 0) return errno;
        if (old.sa_sigaction != kHandlers[role])
            before[role] = old;  // else from an attempt that failed later
    }
    return 0;
}

int SendSignal(ThreadControl& control, Role role) {
    control.asked[role].test_and_set();
    return pthread_kill(control.handle, signals[role]);
}

}  // namespace

int ChooseThreadSignals(int suspend, int resume) {
    const auto isFree = [](int signal) {
        return signal == SIGUSR1 || signal == SIGUSR2 || (signal >= SIGRTMIN && signal <= SIGRTMAX);
    };
    const std::lock_guard guard(installing);
    if (installed) return EBUSY;
    if (!isFree(suspend) || !isFree(resume) || suspend == resume) return EINVAL;
    signals[kSuspend] = suspend;
    signals[kResume] = resume;
    return 0;
}

int InstallThreadSignals() {
    const std::lock_guard guard(installing);
    const int code = installed ? 0 : Install();
    installed = code == 0;
    return code;
}

void EnterThreadSignals(ThreadControl& control) {
    currentControl = &control;
    const sigset_t set = ThreadSignalSet();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void LeaveThreadSignals() {
    const sigset_t set = ThreadSignalSet();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    currentControl = nullptr;
}

ThreadControl* CurrentThreadControl() {
    return currentControl;
}

int SendSuspend(ThreadControl& control) {
    static std::mutex oneAtATime;
    const std::lock_guard guard(oneAtATime);
    control.suspendWanted.test_and_set();
    return SendSignal(control, kSuspend);
}

int SendResume(ThreadControl& control) {
    control.suspendWanted.clear();
    if (const int code = SendSignal(control, kSuspend); code != 0) return code;
    return SendSignal(control, kResume);
}

int SendKill(ThreadControl& control) {
    control.killed.test_and_set();
    SendSignal(control, kResume);  // a suspended thread must go on to end
    if (const int code = SendSignal(control, kKill); code != 0) return code;
    return pthread_cancel(control.handle);
}

ThreadSignalsBlocked::ThreadSignalsBlocked() {
    const sigset_t set = ThreadSignalSet();
    pthread_sigmask(SIG_BLOCK, &set, &before_);
}

ThreadSignalsBlocked::~ThreadSignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace quorbel
