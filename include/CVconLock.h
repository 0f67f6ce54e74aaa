#pragma once

#include <pthread.h>

#include "CVobject.h"
#include "ProcessMark.h"

/// A recursive mutex: the owning thread may lock it again, and frees it with as many unlocks.
///
/// Where an operation answers false, `errno` tells why. In a child process the lock is free, whoever holds it
/// in the parent.
class CVconLock : public CVobject {
public:
    /// Throws CVconException "Create Lock Failed".
    CVconLock();
    ~CVconLock() override;

    CVconLock(const CVconLock&) = delete;
    CVconLock& operator=(const CVconLock&) = delete;

    /// Waits for the lock; false when the system refuses it.
    bool Lock();
    /// True when the lock was free, or this thread's already, and is now taken once more.
    bool TryLock();
    /// False, without harm, when this thread does not hold the lock.
    bool Unlock();

private:
    pthread_mutex_t& Mutex();

    quorbel::ProcessMark process_;
    pthread_mutex_t mutex_;
};

namespace quorbel {

/// Holds a CVconLock for a scope.
///
/// On leaving it unlocks as often as it locked, and deletes the lock when told to own it. The destructor
/// never throws; only the explicit calls do.
class ScopedLock {
public:
    enum class Start { Locked, Unlocked };
    enum class Owns { No, Yes };

    /// Throws CVconException "Create lock failed" for a null lock, "Lock failed" when it is refused.
    explicit ScopedLock(CVconLock* lock, Start start = Start::Locked, Owns owns = Owns::No);
    ~ScopedLock();

    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

    /// Throws CVconException "Lock failed".
    void Lock();
    /// Throws CVconException "Unlock failed".
    void Unlock();

private:
    CVconLock* lock_;
    int locked_ = 0;
    bool deleteAtEnd_;
};

}  // namespace quorbel
