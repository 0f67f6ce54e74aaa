#pragma once

#include <pthread.h>
#include <sys/time.h>

#include <cstdint>
#include <ctime>

#include "CVobject.h"
#include "ProcessMark.h"

/// Lets threads sleep until another one has something for them.
///
/// A signal is remembered: when nobody waits, the next wait ends at once, so a worker that was busy when it
/// was called misses nothing. At most one is remembered for each waiting thread, and one when none waits;
/// what there is to do must therefore stand in the caller's own data. A broadcast frees the threads that wait
/// at that moment and is not remembered. A wait ends for no other reason than these, its time or
/// cancellation.
///
/// Any thread may call. Every operation throws CVconException "Lock Failed" when the event's own mutex cannot
/// be taken. No thread may be in one when the event is destroyed. In a child process the event is as new.
class CVconEvent : public CVobject {
public:
    enum class Wake { Signalled, TimedOut };

    CVconEvent() = default;
    ~CVconEvent() override;

    CVconEvent(const CVconEvent&) = delete;
    CVconEvent& operator=(const CVconEvent&) = delete;

    Wake Wait();
    /// Callers that need real milliseconds must not use this, see Deadline.
    Wake Wait(long timeoutMilliseconds);

    /// Frees one waiting thread. Throws CVconException "Broadcast Event Failed".
    void Signal();
    /// Frees all waiting threads. Throws CVconException "Broadcast Event Failed".
    void Broadcast();

    /// When a wait that begins `now` times out, on the real-time clock.
    ///
    /// Whole seconds of the timeout count in full, but its remainder below a second counts as microseconds:
    /// 1500 lasts a little over one second, 500 half a millisecond. Kept for compatibility. A negative timeout
    /// ends at once.
    static timespec Deadline(const timeval& now, long timeoutMilliseconds);

private:
    class Guard;
    class Waiter;

    void Claim();
    /// With the mutex held; a null deadline never passes.
    Wake WaitUntilFreed(const timespec* deadline);

    quorbel::ProcessMark process_;
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition_ = PTHREAD_COND_INITIALIZER;
    std::uint64_t generation_ = 0;  // broadcasts so far
    unsigned long waiters_ = 0;     // not freed by a broadcast
    unsigned long wakeUps_ = 0;     // signals that no thread has taken yet
};
