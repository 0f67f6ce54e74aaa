#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "CVconThread.h"
#include "syslib/CVsysEventLogInterface.h"

namespace quorbel {

class LogQueue;

/// How long Start and Stop give a worker that does not come up, or does not end.
struct WorkerTimeouts {
    int startChecks = 5;
    std::chrono::milliseconds startPause{500};
    int stopRounds = 10;
    std::chrono::milliseconds stopRound{1000};
};

}  // namespace quorbel

/// The event log that queues each entry for a worker thread of its own, for long-running services: a slow
/// disk or database does not delay the caller.
///
/// Entries are refused before Start and from Stop on. A result of 1 tells that the entry is queued, not that
/// it will be written. Entries of one thread keep their order, and each carries the time at which it was
/// queued. A child of the process has no worker: its copy refuses every entry, and stops at once.
class CVsysEventLogMultiThreaded : public CVsysEventLogInterface, public CVconDelegate {
public:
    CVsysEventLogMultiThreaded(std::string module, std::string configDirectory, std::string furtherName = {},
                               const quorbel::WorkerTimeouts& timeouts = {});
    /// Stops the log.
    ~CVsysEventLogMultiThreaded() override;

    /// Also starts the worker. Throws CVconException "Create Thread Failed" when the system gives no thread,
    /// "Worker thread is not running" when it does not come up; the log is then stopped.
    bool Start() override;
    /// Waits until everything queued is written. A worker that has written nothing for ten seconds (the rounds
    /// of the time-outs) is killed and, if it is still stuck in the writer, left behind; the object may be
    /// deleted all the same. The system log is told how many entries were lost. Always true.
    bool Stop() override;
    /// How many entries Stop found queued and had to drop; 0 before it. One that was being written counts,
    /// though it may still be written.
    std::size_t DroppedEntries() const { return dropped_; }
    /// False once Stop is called.
    virtual bool IsRunning() const;

    /// The worker's body.
    void DoWork(pthread_t threadId) override;

protected:
    int Deliver(quorbel::LogLevel level, const std::string& message, int extra,
                const char* userText) override;

private:
    void StartWorker();
    void EndWorker();

    const quorbel::WorkerTimeouts timeouts_;
    const std::shared_ptr<quorbel::LogQueue> queue_;
    CVconThread worker_{this};
    std::size_t dropped_ = 0;
};
