#pragma once

#include <pthread.h>

/// Keeps this thread from being cancelled for a scope.
///
/// Many system calls are cancellation points. Where the unwinding may not pass, in a destructor or any other
/// noexcept function, it would end the process.
class CancellationShield {
public:
    CancellationShield() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_); }
    ~CancellationShield() { pthread_setcancelstate(previous_, nullptr); }

    CancellationShield(const CancellationShield&) = delete;
    CancellationShield& operator=(const CancellationShield&) = delete;

private:
    int previous_ = PTHREAD_CANCEL_ENABLE;
};
