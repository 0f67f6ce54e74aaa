#include "CVconLock.h"

#include <unistd.h>

#include <cerrno>

#include "CVException.h"

namespace {

[[noreturn]] void Fail(int line, const char* message, int code) {
    errno = code;
    throw CVconException(gettid(), "CVconLock", line, message, code == 0 ? "" : GetSystemErrorText());
}

/// Returns 0 or the error code of the call that failed.
int InitialiseRecursive(pthread_mutex_t& mutex) {
    pthread_mutexattr_t attributes;
    if (const int code = pthread_mutexattr_init(&attributes); code != 0) return code;
    int code = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    if (code == 0) code = pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return code;
}

}  // namespace

CVconLock::CVconLock() {
    if (const int code = InitialiseRecursive(mutex_); code != 0) Fail(__LINE__, "Create Lock Failed", code);
}

CVconLock::~CVconLock() {
    pthread_mutex_destroy(&mutex_);
}

bool CVconLock::Lock() {
    return pthread_mutex_lock(&mutex_) == 0;
}

bool CVconLock::TryLock() {
    return pthread_mutex_trylock(&mutex_) == 0;
}

bool CVconLock::Unlock() {
    return pthread_mutex_unlock(&mutex_) == 0;
}

ScopedLock::ScopedLock(CVconLock* lock, Start start, Owns owns)
    : lock_(lock), deleteAtEnd_(owns == Owns::Yes) {
    if (lock_ == nullptr) Fail(__LINE__, "Create lock failed", 0);
    if (start == Start::Locked) Lock();
}

ScopedLock::~ScopedLock() {
    // Unlock first: a locked mutex must not be destroyed.
    if (unlockAtEnd_) lock_->Unlock();
    if (deleteAtEnd_) delete lock_;
}

void ScopedLock::Lock() {
    if (!lock_->Lock()) Fail(__LINE__, "Lock failed", EINVAL);
    unlockAtEnd_ = true;
}

void ScopedLock::Unlock() {
    unlockAtEnd_ = false;
    if (!lock_->Unlock()) Fail(__LINE__, "Unlock failed", EPERM);
}
