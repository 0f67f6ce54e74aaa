#pragma once

#include <pthread.h>

namespace quorbel {

/// Keeps the calling thread from being ended by CVconThread::Kill in its scope.
///
/// For code that must not be left in the middle: C libraries, destructors, anything noexcept. A kill that
/// comes in the meantime takes effect at the thread's next cancellation point after the scope.
class NoCancellation {
public:
    NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
    ~NoCancellation() { pthread_setcancelstate(before_, nullptr); }

    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace quorbel
