#pragma once

#include <sched.h>
#include <unistd.h>

#include <atomic>

namespace quorbel {

/// getpid() without a system call: an entry of a log asks for it half a dozen times. The number is kept on a
/// page that the kernel wipes in every child with a memory of its own. One that shares its parent's, as behind vfork,
/// must not ask.
pid_t OwnProcess();

/// Tells an object that it was carried over a fork: what the threads of the parent held stays held in the
/// child's copy, where those threads do not run, and file locks do not come along.
class ProcessMark {
public:
    /// Whether this process made the object or has claimed it.
    bool IsOurs() const { return process_.load(std::memory_order_acquire) == OwnProcess(); }

    /// Calls `renew` when this is another process than the last one that claimed the object. Other threads
    /// wait meanwhile.
    template <class Renew>
    void Claim(Renew renew) {
        const pid_t self = OwnProcess();
        for (pid_t seen = process_.load(std::memory_order_acquire); seen != self; seen = process_.load()) {
            if (seen == kRenewing) {
                sched_yield();
            } else if (process_.compare_exchange_strong(seen, kRenewing)) {
                renew();
                process_.store(self, std::memory_order_release);
            }
        }
    }

private:
    static constexpr pid_t kRenewing = 0;

    std::atomic<pid_t> process_{OwnProcess()};
};

}  // namespace quorbel
