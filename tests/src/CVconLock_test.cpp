#include "CVconLock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "CVException.h"
#include "tests/src/ConFailure.h"

using namespace quorbel;

namespace {

bool FreeForOthers(CVconLock& lock) {
    bool taken = false;
    std::thread([&] { taken = lock.TryLock() && lock.Unlock(); }).join();
    return taken;
}

}  // namespace

TEST(CVconLock, IsFreeAfterAsManyUnlocksAsLocks) {
    CVconLock lock;
    EXPECT_TRUE(lock.Lock());
    EXPECT_TRUE(lock.TryLock());
    EXPECT_TRUE(lock.Unlock());
    EXPECT_FALSE(FreeForOthers(lock));
    EXPECT_TRUE(lock.Unlock());
    EXPECT_TRUE(FreeForOthers(lock));
}

TEST(ScopedLock, UnlocksAsOftenAsItLocked) {
    CVconLock lock;
    {
        ScopedLock guard(&lock);
        guard.Lock();
        guard.Lock();
        guard.Unlock();
        EXPECT_FALSE(FreeForOthers(lock));
    }
    EXPECT_TRUE(FreeForOthers(lock));
}

TEST(ScopedLock, DeletesTheLockItOwns) {
    struct Watched : CVconLock {
        explicit Watched(bool* deletedFlag) : deleted(deletedFlag) {}
        ~Watched() override { *deleted = true; }
        bool* deleted;
    };
    bool deleted = false;
    { const ScopedLock guard(new Watched(&deleted), ScopedLock::Start::Locked, ScopedLock::Owns::Yes); }
    EXPECT_TRUE(deleted);
}

// The thread sanitizer reports the misuse that these make.
#ifndef __SANITIZE_THREAD__

TEST(CVconLock, RefusesAnUnlockByAThreadThatDoesNotHoldIt) {
    CVconLock lock;
    EXPECT_FALSE(lock.Unlock());
    EXPECT_EQ(errno, EPERM);
    lock.Lock();
    std::thread([&] { EXPECT_FALSE(lock.Unlock()); }).join();
    EXPECT_FALSE(FreeForOthers(lock));
    lock.Unlock();
}

TEST(ScopedLock, ReportsAFailedUnlockFromTheExplicitCallOnly) {
    CVconLock lock;
    EXPECT_EQ(ConFailureOf([&] {
                  ScopedLock guard(&lock);
                  guard.Unlock();
                  guard.Unlock();
              }),
              std::string("Unlock failed|") + std::strerror(EPERM));
    const ScopedLock guard(&lock);
    lock.Unlock();  // now the guard's own unlock fails, in silence
}

#endif
