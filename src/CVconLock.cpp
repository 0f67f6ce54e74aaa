#include "CVconLock.h"

#include <cerrno>

#include "CVException.h"

using namespace quorbel;

namespace {

constexpr char kLockUnit[] = "CVconLock";

/// The pthread calls return their error; it goes where GetSystemErrorText looks.
bool Succeeded(int code) {
    if (code != 0) errno = code;
    return code == 0;
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
    if (const int code = InitialiseRecursive(mutex_); code != 0) {
        RaiseConFailure(kLockUnit, __LINE__, "Create Lock Failed", code);
    }
}

CVconLock::~CVconLock() {
    pthread_mutex_destroy(&Mutex());
}

pthread_mutex_t& CVconLock::Mutex() {
    process_.Claim([this] { InitialiseRecursive(mutex_); });
    return mutex_;
}

bool CVconLock::Lock() {
    return Succeeded(pthread_mutex_lock(&Mutex()));
}

bool CVconLock::TryLock() {
    return Succeeded(pthread_mutex_trylock(&Mutex()));
}

bool CVconLock::Unlock() {
    return Succeeded(pthread_mutex_unlock(&Mutex()));
}

namespace quorbel {

ScopedLock::ScopedLock(CVconLock* lock, Start start, Owns owns)
    : lock_(lock), deleteAtEnd_(owns == Owns::Yes) {
    if (lock_ == nullptr) RaiseConFailure(kLockUnit, __LINE__, "Create lock failed", 0);
    if (start == Start::Locked) Lock();
}

ScopedLock::~ScopedLock() {
    // Unlock first: a locked mutex must not be destroyed.
    for (; locked_ > 0; --locked_) lock_->Unlock();
    if (deleteAtEnd_) delete lock_;
}

void ScopedLock::Lock() {
    if (!lock_->Lock()) RaiseConFailure(kLockUnit, __LINE__, "Lock failed", errno);
    ++locked_;
}

void ScopedLock::Unlock() {
    if (!lock_->Unlock()) RaiseConFailure(kLockUnit, __LINE__, "Unlock failed", errno);
    if (locked_ > 0) --locked_;
}

}  // namespace quorbel
