#include "CVconThread.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <thread>

#include "CVException.h"
#include "CVconEvent.h"
#include "CVconLock.h"
#include "CVioDirectory.h"
#include "CVioFile.h"
#include "LockFile.h"
#include "NoCancellation.h"
#include "tests/src/ConFailure.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using namespace std::chrono_literals;

namespace {

std::atomic<int> createError{0};

}  // namespace

// The linker sends the platform's calls here.
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                          void* argument) {
    const int code = createError;
    return code != 0 ? code : __real_pthread_create(thread, attributes, start, argument);
}
}

namespace {

class Body : public CVconDelegate {
public:
    explicit Body(std::function<void()> body) : body_(std::move(body)) {}
    void DoWork(pthread_t threadId) override {
        receivedOwnId = pthread_equal(threadId, CVconThread::Self()) != 0;
        body_();
    }

    std::atomic<bool> receivedOwnId{false};

private:
    std::function<void()> body_;
};

/// Sets a flag when the scope ends, by whatever way.
struct Flagging {
    std::atomic<bool>& flag;
    ~Flagging() { flag = true; }
};

bool Ends(const CVconThread& thread) {
    return thread.WaitForEnd(20s);
}

/// Sleeps in a way that the sanitizers can follow when it is cancelled: the thread sanitizer loses track of
/// threads that end in a call it intercepts, the address sanitizer does not clear the frames of those that
/// end.
[[gnu::no_sanitize_address]] void SleepForAnHour() {
    timeval hour{3600, 0};
    select(0, nullptr, nullptr, nullptr, &hour);
}

/// A thread that counts until told to stop.
struct Counter {
    std::atomic<long> count{0};
    std::atomic<bool> stop{false};
    CVconEvent pause;
    Body body{[this] {
        for (; !stop; ++count) pause.Wait(100);  // a tenth of a millisecond
    }};
    CVconThread thread{&body};

    Counter() {
        thread.Create();
        Runs();  // the thread sanitizer can lose a signal that comes before a thread's first wait
    }
    ~Counter() {
        stop = true;
        Ends(thread);
    }

    bool Runs() {
        const long seen = count;
        return Eventually([&] { return count > seen; });
    }
    bool Stands() {
        const long seen = count;
        std::this_thread::sleep_for(5ms);
        return count == seen;
    }
};

bool Paused(const CVconThread& thread) {
    return Eventually([&] { return thread.IsSuspended(); });
}

}  // namespace

TEST(CVconThread, IsAliveFromCreateUntilItsBodyHasEnded) {
    CVconEvent go;
    Body body([&] { go.Wait(); });
    CVconThread thread(&body);
    EXPECT_FALSE(thread.IsAlive());
    EXPECT_TRUE(thread.WaitForEnd(0ms)) << "never created";

    thread.Create();
    EXPECT_TRUE(thread.IsAlive());
    EXPECT_FALSE(thread.WaitForEnd(1ms));
    EXPECT_EQ(ConFailureOf([&] { thread.Create(); }), "Create Thread Failed|Invalid attribute");

    go.Signal();
    EXPECT_TRUE(Ends(thread));
    EXPECT_FALSE(thread.IsAlive());
    EXPECT_TRUE(body.receivedOwnId);
}

TEST(CVconThread, TellsWhyTheSystemRefusedAThread) {
    const struct {
        int code;
        const char* text;
    } cases[] = {
        {EAGAIN, "Out of resource"},
        {EINVAL, "Invalid attribute"},
        {EPERM, "Permission denied"},
        {ENOMEM, "Unknown Error [12]"},
    };
    Body body([] {});
    CVconThread thread(&body);
    for (const auto& c : cases) {
        createError = c.code;
        EXPECT_EQ(ConFailureOf([&] { thread.Create(); }), std::string("Create Thread Failed|") + c.text);
        EXPECT_FALSE(thread.IsAlive());
    }
    createError = 0;
    EXPECT_EQ(ConFailureOf([&] { thread.Create(); }), "nothing") << "a later attempt is free to succeed";
    EXPECT_TRUE(Ends(thread));
}

TEST(CVconThread, DeletesBodyAndThreadWhenTheyAreGivenToIt) {
    std::atomic<int> deleted{0};
    struct WatchedBody : Body {
        explicit WatchedBody(std::atomic<int>& count) : Body([] {}), deletions(count) {}
        ~WatchedBody() override { ++deletions; }
        std::atomic<int>& deletions;
    };
    struct WatchedThread : CVconThread {
        WatchedThread(CVconDelegate* body, std::atomic<int>& count)
            : CVconThread(body, AtEnd::DeleteBodyAndThread), deletions(count) {}
        ~WatchedThread() override { ++deletions; }
        std::atomic<int>& deletions;
    };
    (new WatchedThread(new WatchedBody(deleted), deleted))->Create();
    EXPECT_TRUE(Eventually([&] { return deleted == 2; }));
}

TEST(CVconThread, ExitDestroysTheBodysObjects) {
    std::atomic<bool> destroyed{false}, passed{false};
    Body body([&] {
        const Flagging flagging{destroyed};
        CVconThread::Exit();
        passed = true;
    });
    CVconThread thread(&body);
    thread.Create();
    EXPECT_TRUE(Ends(thread));
    EXPECT_TRUE(destroyed);
    EXPECT_FALSE(passed);
}

TEST(CVconThread, KillUnwindsASleepingBody) {
    CVconLock lock;
    std::atomic<bool> sleeping{false}, destroyed{false};
    Body body([&] {
        const Flagging flagging{destroyed};
        const ScopedLock guard(&lock);
        sleeping = true;
        while (true) SleepForAnHour();
    });
    CVconThread thread(&body);
    thread.Create();
    ASSERT_TRUE(Eventually([&] { return sleeping.load(); }));
    thread.Kill();
    EXPECT_TRUE(Ends(thread));
    EXPECT_TRUE(destroyed);
    EXPECT_TRUE(lock.TryLock() && lock.Unlock()) << "its lock is still taken";
}

TEST(CVconThread, KilledBodySeesTheRequestWhereItCannotBeEnded) {
    std::atomic<bool> passed{false};
    Body body([&] {
        const NoCancellation cannotBeLeft;
        while (!CVconThread::KillRequested()) std::this_thread::sleep_for(100us);
        passed = true;
    });
    CVconThread thread(&body);
    thread.Create();
    thread.Kill();
    EXPECT_TRUE(Ends(thread));
    EXPECT_TRUE(passed);
    EXPECT_FALSE(CVconThread::KillRequested()) << "only the killed thread is meant";
}

TEST(CVconThread, KilledBodyStillGetsALockThatIsFree) {
    const TempDir dir;
    std::atomic<bool> granted{false};
    Body body([&] {
        const NoCancellation asInADestructor;
        while (!CVconThread::KillRequested()) std::this_thread::sleep_for(100us);
        const LockFile lock(dir / "l.lock");
        granted = true;
    });
    CVconThread thread(&body);
    thread.Create();
    thread.Kill();
    EXPECT_TRUE(Ends(thread));
    EXPECT_TRUE(granted);
}

TEST(CVconThread, KilledBodyGivesUpTheLockFileItWaitsFor) {
    const TempDir dir;
    const LockFile held(dir / "l.lock");
    std::atomic<bool> refused{false};
    Body body([&] {
        const NoCancellation asInAWriter;
        try {
            const LockFile wanted(dir / "l.lock");
        } catch (const CVException& exception) {
            refused = exception.GetMessage() == "LockFile Creation Failed";
        }
    });
    CVconThread thread(&body);
    thread.Create();
    thread.Kill();
    EXPECT_TRUE(Ends(thread));
    EXPECT_TRUE(refused);
}

TEST(CVconThread, PausesAndGoesOnOverSeveralCycles) {
    Counter one, other;
    for (int cycle = 0; cycle < 5; ++cycle) {
        one.thread.Suspend();
        ASSERT_TRUE(Paused(one.thread));
        EXPECT_TRUE(one.Stands());
        EXPECT_TRUE(other.Runs()) << "only one was suspended";

        one.thread.Resume();
        EXPECT_TRUE(one.Runs());
        EXPECT_FALSE(one.thread.IsSuspended());
    }
    one.thread.Resume();
    EXPECT_TRUE(one.Runs()) << "a resume without a suspend does nothing";
}

TEST(CVconThread, EndsUpRunningAfterHurriedRequests) {
    Counter counter;
    for (int i = 0; i < 200; ++i) {
        counter.thread.Suspend();
        counter.thread.Resume();
    }
    EXPECT_TRUE(counter.Runs());
}

TEST(CVconThread, CanSuspendItselfAndBeResumed) {
    CVconThread* self = nullptr;
    std::atomic<bool> passed{false};
    Body body([&] {
        self->Suspend();
        passed = true;
    });
    CVconThread thread(&body);
    self = &thread;
    thread.Create();
    ASSERT_TRUE(Paused(thread));
    EXPECT_FALSE(passed);
    EXPECT_TRUE(thread.IsAlive());
    thread.Resume();
    EXPECT_TRUE(Ends(thread));
    EXPECT_TRUE(passed);
}

TEST(CVconThread, KillEndsASuspendedThread) {
    Counter counter;
    counter.thread.Suspend();
    ASSERT_TRUE(Paused(counter.thread));
    counter.thread.Kill();
    EXPECT_TRUE(Ends(counter.thread));
}

TEST(CVconThread, KillsLeaveNoDescriptorOpenAndNoLockTaken) {
    const TempDir dir;
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    CVioFile shared(dir / "shared");
    shared.Open("w");
    Body body([&] {
        for (;;) {
            CVioFile file(dir / "file");
            file.Open("a");
            file.Lock('w', false);
            file.WriteFormatted("%s\n", "entry");
            CVioDirectory(dir.Path()).List();
            shared.Write("x");
            pthread_testcancel();
        }
    });
    const auto before = descriptors();
    for (int round = 0; round < 300; ++round) {
        CVconThread thread(&body);
        thread.Create();
        std::this_thread::sleep_for(std::chrono::microseconds(round * 7 % 500));
        thread.Kill();
        ASSERT_TRUE(Ends(thread));
    }
    EXPECT_EQ(descriptors(), before);
    shared.Lock('w', false);
    EXPECT_EQ(ReadFile(dir / "file").size() % 6, 0U) << "half an entry";
}

TEST(CVconThread, WaitsForEverWhenToldTo) {
    CVconEvent go;
    Body body([&] { go.Wait(); });
    CVconThread thread(&body);
    thread.Create();
    std::atomic<bool> over{false};
    std::thread waiter([&] { over = thread.WaitForEnd(std::chrono::milliseconds::max()); });
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(over);
    go.Signal();
    waiter.join();
    EXPECT_TRUE(over);
}

TEST(CVconThread, IsGoneInAChildWhereLocksAndEventsAreFree) {
    CVconLock lock;
    CVconEvent event;
    Body body([&] {
        const ScopedLock guard(&lock);
        event.Wait();
    });
    auto thread = std::make_unique<CVconThread>(&body);
    thread->Create();
    ASSERT_TRUE(Eventually([&] { return !lock.TryLock() || !lock.Unlock(); }));
    const auto inTheChild = [&] {
        if (thread->IsAlive() || !thread->WaitForEnd(20s)) throw 1;
        if (ConFailureOf([&] { thread->Kill(); }) == "nothing") throw 2;
        if (!lock.TryLock() || !lock.Unlock()) throw 3;
        if (event.Wait(0) != CVconEvent::Wake::TimedOut) throw 4;
#ifndef __SANITIZE_THREAD__  // knows no threads started behind such a fork
        Body again([&] { event.Signal(); });
        CVconThread own(&again);
        own.Create();
        if (!Ends(own) || event.Wait() != CVconEvent::Wake::Signalled) throw 5;
#endif
    };
    EXPECT_EQ(InChildProcess(inTheChild), Child::Finished);
    EXPECT_TRUE(thread->IsAlive());
    event.Signal();
    EXPECT_TRUE(Ends(*thread));
}

using CVconThreadDeathTest = testing::Test;

namespace {

void EndByAnOperatorsQuit() {
    const rlimit none{};
    setrlimit(RLIMIT_CORE, &none);
    CVconEvent never;
    Body body([&] { never.Wait(); });
    CVconThread thread(&body);
    thread.Create();
    kill(getpid(), SIGQUIT);
    Ends(thread);
}

std::atomic<int> handled{0};

void EndAfterSignalsFromOutside() {
    struct sigaction action = {};
    action.sa_handler = [](int signal) { handled += signal; };
    for (const int signal : {SIGUSR1, SIGUSR2, SIGQUIT}) sigaction(signal, &action, nullptr);
    Counter counter;
    int expected = 0;
    for (int round = 0; round < 2; ++round) {
        for (const int signal : {SIGUSR1, SIGUSR2, SIGQUIT}) {
            kill(getpid(), signal);
            expected += signal;
            if (!Eventually([&] { return handled == expected; })) _exit(1);
        }
        counter.thread.Suspend();
        if (!Paused(counter.thread)) _exit(2);
        counter.thread.Resume();
        if (!counter.Runs()) _exit(3);
    }
    counter.thread.Kill();
    if (!Ends(counter.thread) || handled != expected) _exit(4);
    _exit(7);
}

void EndWithSignalsOfItsOwn() {
    struct sigaction action = {};
    action.sa_handler = [](int) { _exit(1); };
    for (const int signal : {SIGUSR1, SIGUSR2}) sigaction(signal, &action, nullptr);
    for (const auto& [suspend, resume] : {std::pair{SIGTERM, SIGUSR2}, {SIGUSR1, SIGUSR1}}) {
        if (ConFailureOf([&, s = suspend, r = resume] { CVconThread::UseSignals(s, r); }) == "nothing")
            _exit(2);
    }
    CVconThread::UseSignals(SIGRTMIN + 2, SIGRTMIN + 3);
    Counter counter;
    counter.thread.Suspend();
    if (!Paused(counter.thread)) _exit(3);
    counter.thread.Resume();
    if (!counter.Runs()) _exit(4);
    if (ConFailureOf([] { CVconThread::UseSignals(SIGUSR1, SIGUSR2); }) == "nothing") _exit(5);
    _exit(7);
}

}  // namespace

TEST(CVconThreadDeathTest, QuitFromOutsideStillEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(EndByAnOperatorsQuit(), testing::KilledBySignal(SIGQUIT), "");
}

TEST(CVconThreadDeathTest, GivesSignalsFromOutsideToTheHandlersBefore) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(EndAfterSignalsFromOutside(), testing::ExitedWithCode(7), "");
}

TEST(CVconThreadDeathTest, PausesBySignalsOfTheServicesChoice) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(EndWithSignalsOfItsOwn(), testing::ExitedWithCode(7), "");
}
