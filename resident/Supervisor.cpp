#include "resident/Supervisor.h"

#include <bsd/unistd.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <utility>

#include "CVException.h"
#include "resident/Report.h"
#include "syslib/LogReport.h"

namespace quorbel {

namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP, SIGUSR1, SIGCHLD};
constexpr std::chrono::seconds kPauseAfterFailure{1};
constexpr int kTick = 1000;  // milliseconds

/// Workers of the program before this one in the same process, too.
bool HasChildren() {
    siginfo_t ignored;
    return waitid(P_ALL, 0, &ignored, WEXITED | WNOHANG | WNOWAIT) == 0;
}

sigset_t Signals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kSignals) sigaddset(&signals, signal);
    return signals;
}

int SupervisorSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    HoldSignals();
    const sigset_t signals = Signals();
    const int descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor < 0) throw CVException("Supervisor", __LINE__, "no signalfd", GetSystemErrorText());
    return descriptor;
}

}  // namespace

void HoldSignals() {
    const sigset_t signals = Signals();
    sigprocmask(SIG_SETMASK, &signals, nullptr);
}

Supervisor::Supervisor(const SupervisorSettings& settings, ListeningSocket& socket, Scoreboard& board,
                       int wake, ProgramStart& start, Work work)
    : settings_(settings),
      socket_(socket),
      board_(board),
      wake_(wake),
      start_(start),
      work_(std::move(work)),
      signals_(SupervisorSignals()),
      children_(settings.workers) {}

Supervisor::~Supervisor() {
    close(signals_);
}

void Supervisor::Run() {
    while (!stopping_ || HasChildren()) {
        StartMissing();
        pollfd events[] = {{signals_, POLLIN, 0}, {wake_, POLLIN, 0}};
        const int count = poll(events, std::size(events), Timeout());
        if (events[1].revents != 0) {
            std::uint64_t ignored = 0;
            [[maybe_unused]] const ssize_t size = read(wake_, &ignored, sizeof ignored);
        }
        TakeSignals();
        if (count == 0) RetireSurplus();
        KillWhenOverdue();
    }
}

void Supervisor::TakeSignals() {
    signalfd_siginfo signal;
    while (read(signals_, &signal, sizeof signal) == sizeof signal)
        OnSignal(static_cast<int>(signal.ssi_signo));
}

void Supervisor::OnSignal(int signal) {
    switch (signal) {
        case SIGCHLD:
            Reap();
            break;
        case SIGHUP:
            Renew();
            break;
        case SIGUSR1:
            TellCounts();
            break;
        default:
            Stop();
            break;
    }
}

void Supervisor::StartMissing() {
    if (stopping_ || Clock::now() < notBefore_) return;
    std::size_t available = Available();
    for (std::size_t place = 0; place < children_.size() && available < settings_.spare; ++place) {
        if (children_[place].pid != 0) continue;
        if (!Start(place)) return;
        ++available;
    }
}

bool Supervisor::Start(std::size_t place) {
    board_.SetState(place, WorkerState::Starting);
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) BecomeWorker(place, parent);
    if (pid < 0) {
        ReportError("cannot start a worker: " + GetSystemErrorText());
        board_.SetState(place, WorkerState::Free);
        notBefore_ = Clock::now() + kPauseAfterFailure;
        return false;
    }
    children_[place] = {.pid = pid};
    return true;
}

/// Never returns, and destroys nothing: what the parent owns is not the worker's to clean up.
void Supervisor::BecomeWorker(std::size_t place, pid_t parent) noexcept {
    close(signals_);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(0);  // it ended before its end could be a signal
    try {
        work_(place);
    } catch (...) {
        ReportCaughtException("Worker", kServiceName, "Unknown Error");
        _exit(1);
    }
    _exit(0);
}

/// One of four at a time: a load that comes and goes finds most of them still there.
void Supervisor::RetireSurplus() {
    const std::size_t available = Available();
    if (stopping_ || available <= settings_.spare) return;
    std::size_t count = (available - settings_.spare + 3) / 4;
    for (std::size_t place = children_.size(); place-- > 0 && count > 0;) {
        if (children_[place].asked || board_.State(place) != WorkerState::Idle) continue;
        Ask(place);
        --count;
    }
}

void Supervisor::Reap() {
    int status = 0;
    for (pid_t pid; (pid = waitpid(-1, &status, WNOHANG)) > 0;) {
        const auto child = std::find_if(children_.begin(), children_.end(),
                                        [&](const Child& known) { return known.pid == pid; });
        if (child == children_.end()) {
            if (WIFSIGNALED(status))
                ReportError("a worker from before the reload was ended by " +
                            DescribeSignal(WTERMSIG(status)));
            continue;
        }
        const auto place = static_cast<std::size_t>(child - children_.begin());
        ReportEnd(place, status);
        *child = {};
        board_.SetState(place, WorkerState::Free);
    }
}

void Supervisor::ReportEnd(std::size_t place, int status) {
    const WorkerState state = board_.State(place);
    if (WIFSIGNALED(status)) {
        ++crashes_;
        ReportError("a worker was ended by " + DescribeSignal(WTERMSIG(status)) + " " +
                    DescribeWork(state, board_.Note(place)));
    } else if (WEXITSTATUS(status) != 0) {
        ReportError("a worker ended with status " + std::to_string(WEXITSTATUS(status)) + " " +
                    DescribeWork(state, board_.Note(place)));
    }
    // What cannot work, or ends before it is ready, would end again and again.
    const bool cannotWork = WIFEXITED(status) && WEXITSTATUS(status) != 0;
    if ((state == WorkerState::Starting || cannotWork) && !children_[place].asked)
        notBefore_ = Clock::now() + kPauseAfterFailure;
}

/// The running requests end in the workers that were asked, which stay this process's children. A socket of its own
/// is not given away: its lock file would be open twice.
void Supervisor::Renew() {
    AskAll();
    if (stopping_ || socket_.IsOwn()) return;
    start_.RepeatWith(socket_.Descriptor());
    ReportError("cannot start the program again: " + GetSystemErrorText());
}

void Supervisor::AskAll() {
    for (std::size_t place = 0; place < children_.size(); ++place) Ask(place);
}

void Supervisor::Ask(std::size_t place) {
    Child& child = children_[place];
    if (child.pid == 0 || child.asked) return;
    child.asked = true;
    kill(child.pid, SIGTERM);
}

void Supervisor::Stop() {
    if (std::exchange(stopping_, true)) return;
    setproctitle("stopping");
    deadline_ = Clock::now() + settings_.patience;
    if (socket_.IsOwn()) board_.SetDraining();
    socket_.Shut();
    AskAll();
}

void Supervisor::KillWhenOverdue() {
    if (Clock::now() < deadline_) return;
    deadline_ = Clock::time_point::max();
    ReportError("workers that still serve a request are ended after " +
                std::to_string(settings_.patience.count()) + " s");
    for (const Child& child : children_) {
        if (child.pid != 0) kill(child.pid, SIGKILL);
    }
}

std::size_t Supervisor::Alive() const {
    return static_cast<std::size_t>(
        std::count_if(children_.begin(), children_.end(), [](const Child& child) { return child.pid != 0; }));
}

/// How many workers are idle or soon will be.
std::size_t Supervisor::Available() const {
    std::size_t count = 0;
    for (std::size_t place = 0; place < children_.size(); ++place) {
        const WorkerState state = board_.State(place);
        count += !children_[place].asked && (state == WorkerState::Idle || state == WorkerState::Starting);
    }
    return count;
}

/// For poll: a tick while time matters, else for ever.
int Supervisor::Timeout() const {
    const std::size_t available = Available();
    const bool waits = stopping_ || available > settings_.spare ||
                       (available < settings_.spare && Clock::now() < notBefore_);
    return waits ? kTick : -1;
}

void Supervisor::TellCounts() const {
    ReportInfo("workers " + std::to_string(Alive()) + " (idle " +
               std::to_string(board_.Count(WorkerState::Idle)) + ", serving " +
               std::to_string(board_.Count(WorkerState::Serving)) + ") of at most " +
               std::to_string(settings_.workers) + ", requests begun " + std::to_string(board_.Begun()) +
               ", workers crashed " + std::to_string(crashes_));
}

}  // namespace quorbel
