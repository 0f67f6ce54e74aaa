#include "CVconEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/support/Eventually.h"

using namespace quorbel;

using Wake = CVconEvent::Wake;

namespace {

constexpr long kNow = 0;

/// Threads that wait once each; `Freed` counts those whose wait has ended.
class Waiters {
public:
    Waiters(CVconEvent& event, int count) {
        for (int i = 0; i < count; ++i) {
            threads_.emplace_back([this, &event] {
                ++started_;
                if (event.Wait() == Wake::Signalled) ++freed_;
            });
        }
        Eventually([&] { return started_ == count; });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // from there into the wait
    }
    ~Waiters() {
        for (auto& thread : threads_) thread.join();
    }

    bool Freed(int count) const {
        return Eventually([&] { return freed_ == count; });
    }

private:
    std::atomic<int> started_{0};
    std::atomic<int> freed_{0};
    std::vector<std::thread> threads_;
};

}  // namespace

TEST(CVconEvent, CountsTheMillisecondRemainderAsMicroseconds) {
    const struct {
        timeval now;
        long timeout;
        timespec deadline;
    } cases[] = {
        {{100, 0}, 1500, {101, 500'000}},
        {{100, 0}, 500, {100, 500'000}},
        {{100, 0}, 999, {100, 999'000}},
        {{100, 0}, 1000, {101, 0}},
        {{100, 999'500}, 499, {100, 999'999'000}},
        {{100, 999'500}, 500, {101, 0}},  // exactly a second carries
        {{100, 999'999}, 2999, {103, 998'000}},
        {{100, 250}, 0, {100, 250'000}},
        {{100, 250}, -1, {100, 250'000}},
    };
    for (const auto& c : cases) {
        const timespec deadline = CVconEvent::Deadline(c.now, c.timeout);
        EXPECT_EQ(deadline.tv_sec, c.deadline.tv_sec) << c.now.tv_usec << " + " << c.timeout;
        EXPECT_EQ(deadline.tv_nsec, c.deadline.tv_nsec) << c.now.tv_usec << " + " << c.timeout;
    }
}

TEST(CVconEvent, RemembersOneSignalWhileNobodyWaits) {
    CVconEvent event;
    event.Signal();
    event.Signal();
    EXPECT_EQ(event.Wait(), Wake::Signalled);
    EXPECT_EQ(event.Wait(kNow), Wake::TimedOut);
}

TEST(CVconEvent, BroadcastFreesAllWaitersAndLeavesNothingBehind) {
    CVconEvent event;
    {
        const Waiters waiters(event, 3);
        event.Signal();
        event.Broadcast();
        EXPECT_TRUE(waiters.Freed(3));
    }
    event.Broadcast();
    EXPECT_EQ(event.Wait(kNow), Wake::TimedOut);
}

TEST(CVconEvent, BroadcastKeepsASignalThatNobodyHasTaken) {
    CVconEvent event;
    event.Signal();
    event.Broadcast();
    EXPECT_EQ(event.Wait(kNow), Wake::Signalled);
}

TEST(CVconEvent, LosesNoWakeUpBetweenABusyWorkerAndItsCallers) {
    constexpr int kCallers = 4, kCalls = 2000;
    CVconEvent event;
    std::atomic<int> waiting{0};
    std::vector<std::thread> callers;
    callers.reserve(kCallers);
    for (int i = 0; i < kCallers; ++i) {
        callers.emplace_back([&] {
            for (int call = 0; call < kCalls; ++call) {
                ++waiting;
                event.Signal();
            }
        });
    }
    int done = 0;
    while (done < kCallers * kCalls) {
        event.Wait();
        done += waiting.exchange(0);
    }
    for (auto& caller : callers) caller.join();
    EXPECT_EQ(done, kCallers * kCalls);
}
