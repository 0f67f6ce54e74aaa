#include "resident/Worker.h"

#include <bsd/unistd.h>
#include <malloc.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <new>
#include <utility>

#include "CVException.h"
#include "resident/Connection.h"
#include "resident/Report.h"
#include "syslib/LogReport.h"
#include "util/BoundedText.h"

namespace quorbel {

namespace {

constexpr int kNone = -1;

bool memoryRanOut = false;

[[noreturn]] void NoteThatMemoryRanOut() {
    memoryRanOut = true;
    throw std::bad_alloc();
}

/// A worker that cannot work says so and ends, and the parent waits before it starts the next one.
int Made(int result, const char* whatFailed) {
    if (result < 0) throw CVException("Worker", __LINE__, whatFailed, GetSystemErrorText());
    return result;
}

/// Signals wait while a request is served: none may break into a post or an answer.
int WorkerSignals() {
    for (const int ignored : {SIGPIPE, SIGINT, SIGHUP, SIGUSR1}) std::signal(ignored, SIG_IGN);
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    sigprocmask(SIG_SETMASK, &end, nullptr);
    return Made(signalfd(-1, &end, SFD_CLOEXEC | SFD_NONBLOCK), "no descriptor for signals");
}

/// A large request must not leave a large worker behind.
void GiveMemoryBack() {
    constexpr int kMostKept = 1 << 20;
    mallopt(M_TRIM_THRESHOLD, kMostKept);
}

int Watch(int listener, int signals) {
    const int events = Made(epoll_create1(EPOLL_CLOEXEC), "no descriptor for events");
    epoll_event event = {};
    event.data.fd = listener;
    event.events = EPOLLIN | EPOLLEXCLUSIVE;  // one connection wakes one worker
    Made(epoll_ctl(events, EPOLL_CTL_ADD, listener, &event), "cannot watch the socket");
    event.data.fd = signals;
    event.events = EPOLLIN;
    Made(epoll_ctl(events, EPOLL_CTL_ADD, signals, &event), "cannot watch for signals");
    return events;
}

template <std::size_t N>
void CopyValue(char (&field)[N], const char* value) {
    CopyText(field, value == nullptr ? "" : value);
}

}  // namespace

Worker::Worker(int listener, int wake, Scoreboard& board, std::size_t place, const WorkerSettings& settings,
               Service service)
    : listener_(listener),
      wake_(wake),
      board_(board),
      place_(place),
      settings_(settings),
      service_(std::move(service)) {}

Worker::~Worker() {
    if (events_ != kNone) close(events_);
    if (signals_ != kNone) close(signals_);
}

void Worker::Run() {
    signals_ = WorkerSignals();
    events_ = Watch(listener_, signals_);
    GiveMemoryBack();
    std::set_new_handler(NoteThatMemoryRanOut);
    DetachStandardStreams();
    static char output[1 << 16];
    std::setvbuf(stdout, output, _IOFBF, sizeof output);
    for (int served = 0; served < settings_.requests || board_.IsDraining(); ++served) {
        setproctitle("idle, %d served", served);
        board_.SetState(place_, WorkerState::Idle);
        const int connection = NextConnection();
        if (connection == kNone) return;
        setproctitle("serving, %d served", served);
        if (!Serve(connection)) return;
    }
}

/// kNone when the worker is to end.
int Worker::NextConnection() {
    while (!asked_) {
        AwaitConnection();
        const int connection = asked_ ? kNone : Accept();
        if (connection != kNone) return connection;
    }
    // The connection that woke this worker may have woken no other one.
    return std::exchange(tookLast_, true) && !board_.IsDraining() ? kNone : Accept();
}

void Worker::AwaitConnection() {
    epoll_event ready[2];
    const int count = epoll_wait(events_, ready, 2, -1);
    for (int i = 0; i < count; ++i) asked_ = asked_ || ready[i].data.fd == signals_;
}

int Worker::Accept() {
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection >= 0 || errno == EAGAIN || errno == EINTR || errno == ECONNABORTED) return connection;
    if (errno != EINVAL) Made(connection, "cannot take a connection");  // no descriptor is left, for example
    asked_ = true;                                                      // the socket was shut
    return kNone;
}

bool Worker::Serve(int connection) {
    board_.Note(place_) = {.number = board_.NextNumber(), .started = std::time(nullptr)};
    board_.SetState(place_, WorkerState::Serving);
    WakeParentWhenFewIdle();
    ScgiHeader header;
    if (!ReadHeader(connection, header, settings_.headerTimeout)) {
        close(connection);
        return true;
    }
    NoteRequest(header);
    environment_.Enter(header);
    bool fit = false;
    {
        const StandardStreams streams(connection, settings_.pause);
        fit = CallService();
    }
    environment_.Leave();
    if (fit) service_.forget();
    return fit && !memoryRanOut;
}

bool Worker::CallService() {
    try {
        return service_.serve();
    } catch (...) {
        ReportCaughtException("Worker", kServiceName, "Unknown Error");
        return false;
    }
}

void Worker::NoteRequest(const ScgiHeader& header) {
    RequestNote& note = board_.Note(place_);
    CopyValue(note.method, header.Find("REQUEST_METHOD"));
    CopyValue(note.peer, header.Find("REMOTE_ADDR"));
    CopyValue(note.id, header.Find("HTTP_X_REQUEST_ID"));
}

void Worker::WakeParentWhenFewIdle() const {
    if (board_.Count(WorkerState::Idle) >= settings_.spare) return;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written =
        write(wake_, &one, sizeof one);  // full: the parent is woken anyway
}

}  // namespace quorbel
