#pragma once

#include <pthread.h>

#include <chrono>
#include <memory>

#include "CVobject.h"

namespace quorbel {

struct ThreadControl;

}  // namespace quorbel

/// What a CVconThread runs.
class CVconDelegate : public CVobject {
public:
    /// The thread's body: the thread ends when it returns.
    ///
    /// A body can be ended in the middle, by CVconThread::Kill or Exit: its objects are destroyed as by an
    /// exception. A catch-all in it must therefore re-throw `abi::__forced_unwind`. Any exception that leaves
    /// the body ends the process.
    virtual void DoWork(pthread_t threadId) = 0;
};

/// A detached thread that runs a delegate's body once.
///
/// Nobody joins it. Destroying the object neither ends the thread nor waits for it; the body must outlive the
/// thread. Once `Create` has returned, any thread may call the other operations. In a child process the thread
/// counts as ended.
///
/// The first `Create` of a process installs handlers for SIGUSR1, SIGUSR2 and SIGQUIT. Such a signal that
/// does not come from these operations is given to the handler that was there before; without one, SIGQUIT
/// ends the process and the others do nothing.
///
/// Failures are CVconExceptions; those of Kill, Suspend and Resume carry the text of ESRCH when the thread
/// has ended or was never created.
class CVconThread : public CVobject {
public:
    /// DeleteBodyAndThread: the thread deletes both when its body ends. Both must then come from `new`, and
    /// nobody may use them once Create has returned. They stay the caller's when Create throws.
    enum class AtEnd { KeepBody, DeleteBodyAndThread };

    explicit CVconThread(CVconDelegate* body, AtEnd atEnd = AtEnd::KeepBody);
    ~CVconThread() override;

    CVconThread(const CVconThread&) = delete;
    CVconThread& operator=(const CVconThread&) = delete;

    /// Starts the body. Throws "Create Thread Failed", also while the thread lives, and "Initialize Thread
    /// Lib Failed" when the handlers cannot be installed.
    void Create();

    /// Ends the thread at its next cancellation point (a sleep, a wait, a read), destroying the body's
    /// objects so that its locks are freed. A body that reaches none cannot be ended: it should ask
    /// KillRequested from time to time. Throws "Kill Thread Failed".
    void Kill();

    /// Asks the thread to pause until Resume; it does so as soon as the signal reaches it, wherever it is.
    /// Locks that it holds stay taken meanwhile. Throws "Suspend Thread Failed".
    void Suspend();
    /// Throws "Resume Thread Failed".
    void Resume();

    /// From Create on until the body has ended, its objects destroyed.
    bool IsAlive() const;
    /// Whether the thread has paused, which is some time after Suspend asked for it.
    bool IsSuspended() const;
    /// Waits until the thread is no longer alive; false when it still is after `limit`. milliseconds::max()
    /// waits for ever.
    bool WaitForEnd(std::chrono::milliseconds limit) const;

    /// Pauses and resumes by these signals, SIGUSR1, SIGUSR2 or real-time ones, instead of SIGUSR1 and
    /// SIGUSR2. Throws "Initialize Thread Lib Failed" when they cannot be used or a thread was created before.
    static void UseSignals(int suspend, int resume);

    static pthread_t Self();
    /// Ends the calling thread, destroying the objects on its stack.
    [[noreturn]] static void Exit();
    /// Whether somebody has killed the calling thread, which may not have reached a cancellation point yet.
    static bool KillRequested();

private:
    void Send(int line, const char* failure, int (*send)(quorbel::ThreadControl&));

    CVconDelegate* body_;
    AtEnd atEnd_;
    std::shared_ptr<quorbel::ThreadControl> control_;  // of the last Create, shared with the running thread
};
