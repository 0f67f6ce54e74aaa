#include "CVconEvent.h"

#include <algorithm>

#include "CVException.h"

using namespace quorbel;

namespace {

constexpr char kEventUnit[] = "CVconEvent";

}  // namespace

/// Holds the event's mutex; also frees it when a cancelled wait unwinds.
class CVconEvent::Guard {
public:
    explicit Guard(pthread_mutex_t& mutex) : mutex_(mutex) {
        if (const int code = pthread_mutex_lock(&mutex_); code != 0) {
            RaiseConFailure(kEventUnit, __LINE__, "Lock Failed", code);
        }
    }
    ~Guard() { pthread_mutex_unlock(&mutex_); }

    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    pthread_mutex_t& mutex_;
};

/// Counts the calling thread as waiting, under the event's mutex.
class CVconEvent::Waiter {
public:
    explicit Waiter(CVconEvent& event) : event_(event), generation_(event.generation_) { ++event_.waiters_; }
    ~Waiter() {
        if (FreedByBroadcast()) return;
        --event_.waiters_;
        event_.wakeUps_ = std::min(event_.wakeUps_, std::max(event_.waiters_, 1UL));
        // A thread that is cancelled just as it is woken passes the wake-up on.
        if (event_.wakeUps_ > 0) pthread_cond_signal(&event_.condition_);
    }

    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    bool FreedByBroadcast() const { return event_.generation_ != generation_; }
    bool Freed() const { return FreedByBroadcast() || event_.wakeUps_ > 0; }
    /// A broadcast frees without using up a signal that came after it.
    void Take() {
        if (!FreedByBroadcast()) --event_.wakeUps_;
    }

private:
    CVconEvent& event_;
    std::uint64_t generation_;
};

CVconEvent::~CVconEvent() {
    Claim();  // or the destruction would wait for the parent's threads
    pthread_cond_destroy(&condition_);
    pthread_mutex_destroy(&mutex_);
}

void CVconEvent::Claim() {
    process_.Claim([this] {
        pthread_mutex_init(&mutex_, nullptr);
        pthread_cond_init(&condition_, nullptr);
        waiters_ = wakeUps_ = 0;
    });
}

CVconEvent::Wake CVconEvent::Wait() {
    Claim();
    const Guard guard(mutex_);
    return WaitUntilFreed(nullptr);
}

CVconEvent::Wake CVconEvent::Wait(long timeoutMilliseconds) {
    Claim();
    const Guard guard(mutex_);
    timeval now{};
    gettimeofday(&now, nullptr);
    const timespec deadline = Deadline(now, timeoutMilliseconds);
    return WaitUntilFreed(&deadline);
}

CVconEvent::Wake CVconEvent::WaitUntilFreed(const timespec* deadline) {
    Waiter waiter(*this);
    for (int code = 0; !waiter.Freed();) {
        if (code != 0) return Wake::TimedOut;
        code = deadline ? pthread_cond_timedwait(&condition_, &mutex_, deadline)
                        : pthread_cond_wait(&condition_, &mutex_);
    }
    waiter.Take();
    return Wake::Signalled;
}

void CVconEvent::Signal() {
    Claim();
    const Guard guard(mutex_);
    wakeUps_ = std::min(wakeUps_ + 1, std::max(waiters_, 1UL));
    if (const int code = pthread_cond_signal(&condition_); code != 0) {
        RaiseConFailure(kEventUnit, __LINE__, "Broadcast Event Failed", code);
    }
}

void CVconEvent::Broadcast() {
    Claim();
    const Guard guard(mutex_);
    ++generation_;
    if (waiters_ > 0) wakeUps_ = 0;  // meant for threads that are all freed now
    waiters_ = 0;
    if (const int code = pthread_cond_broadcast(&condition_); code != 0) {
        RaiseConFailure(kEventUnit, __LINE__, "Broadcast Event Failed", code);
    }
}

timespec CVconEvent::Deadline(const timeval& now, long timeoutMilliseconds) {
    constexpr long kNanosecondsPerSecond = 1'000'000'000;
    const long timeout = std::max(timeoutMilliseconds, 0L);
    timespec deadline{now.tv_sec + timeout / 1000, (timeout % 1000 + now.tv_usec) * 1000};
    if (deadline.tv_nsec >= kNanosecondsPerSecond) {  // equal is refused by the wait, too
        ++deadline.tv_sec;
        deadline.tv_nsec -= kNanosecondsPerSecond;
    }
    return deadline;
}
