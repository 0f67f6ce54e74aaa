#include "syslib/CVsysEventLogMultiThreaded.h"

#include <unistd.h>

#include <atomic>
#include <ctime>
#include <thread>
#include <utility>
#include <vector>

#include "CVException.h"
#include "CVconEvent.h"
#include "CVconLock.h"
#include "NoCancellation.h"
#include "ProcessMark.h"
#include "syslib/LogReport.h"
#include "syslib/LogWriters.h"

namespace quorbel {

/// An entry between the caller that logged it and the worker that writes it.
struct Queued {
    unsigned level;
    std::string message;
    int extra;
    std::string userText;  // empty when there is none
    std::time_t time;      // when it was queued
};

/// The entries of one log on their way to its writer.
///
/// Held by shared_ptr, by the log and by the worker thread that serves the queue: a worker that is stuck in
/// the writer may outlive its log. Any thread may add; it waits for other callers only, never for the writer.
///
/// It belongs to the process that made it. In a child of that process there is no worker, and the locks are
/// as other threads left them: only IsForeign may be called.
class LogQueue {
public:
    explicit LogQueue(std::string module) : module_(std::move(module)) {}

    bool IsForeign() const { return !process_.IsOurs(); }

    /// Lets entries in, which go to `writer`.
    void Open(std::shared_ptr<SharedWriter> writer);
    /// Stamps and queues an entry; false before Open and after Close.
    bool Add(unsigned level, const std::string& message, int extra, const char* userText);
    /// Lets no more entries in, for good, and has the worker write what is there and end. True when this call
    /// closed it.
    bool Close();
    bool IsClosed();
    /// Lets go of the writer and of the entries that the worker has not taken. Returns how many entries that
    /// were added are not written; one that is being written is among them.
    std::size_t Discard();
    /// How many entries the worker is done with.
    std::size_t Done() const { return done_; }

    /// The worker's part: writes entries in the order of their queueing until the queue is closed and empty.
    /// A kill of the thread takes effect between two entries, or while an entry waits. An entry whose writing throws is reported to
    /// the system log and left out.
    void Serve();
    /// Waits until a worker is in Serve.
    void WaitUntilServed() const { served_.wait(false); }

private:
    struct Batch {
        std::shared_ptr<SharedWriter> writer;
        std::vector<Queued> entries;
        bool last;
    };

    Batch TakeAll();
    bool Write(SharedWriter& writer, const Queued& entry) const;

    ProcessMark process_;
    const std::string module_;
    CVconLock lock_;
    CVconEvent wakeUp_;
    std::atomic<bool> served_{false};
    std::atomic<std::size_t> done_{0};
    // Under the lock:
    std::size_t added_ = 0;
    std::shared_ptr<SharedWriter> writer_;
    std::vector<Queued> entries_;
    bool closed_ = false;
};

void LogQueue::Open(std::shared_ptr<SharedWriter> writer) {
    const ScopedLock lock(&lock_);
    writer_ = std::move(writer);
}

bool LogQueue::Add(unsigned level, const std::string& message, int extra, const char* userText) {
    const ScopedLock lock(&lock_);
    if (closed_ || !writer_) return false;
    entries_.push_back({level, message, extra, userText ? userText : "", std::time(nullptr)});
    ++added_;
    wakeUp_.Signal();
    return true;
}

bool LogQueue::Close() {
    const ScopedLock lock(&lock_);
    if (std::exchange(closed_, true)) return false;
    wakeUp_.Signal();
    return true;
}

bool LogQueue::IsClosed() {
    const ScopedLock lock(&lock_);
    return closed_;
}

std::size_t LogQueue::Discard() {
    const Batch discarded = TakeAll();
    const ScopedLock lock(&lock_);
    writer_.reset();
    return added_ - done_;
}

LogQueue::Batch LogQueue::TakeAll() {
    const ScopedLock lock(&lock_);
    return {writer_, std::exchange(entries_, {}), closed_};
}

void LogQueue::Serve() {
    served_ = true;
    served_.notify_all();
    while (wakeUp_.Wait() == CVconEvent::Wake::Signalled) {
        // Writers use C libraries, and letting go of the last hold on one runs its destructor: neither may be
        // left in the middle. Declared before the batch, so that it covers its end.
        const NoCancellation untilWritten;
        const Batch batch = TakeAll();
        for (const Queued& entry : batch.entries) {
            const bool written = !CVconThread::KillRequested() && Write(*batch.writer, entry);
            if (!written && CVconThread::KillRequested()) return;
            ++done_;
        }
        if (batch.last) return;
    }
}

bool LogQueue::Write(SharedWriter& writer, const Queued& entry) const {
    const char* const userText = entry.userText.empty() ? nullptr : entry.userText.c_str();
    try {
        return writer.Write(module_, entry.level, entry.message, entry.extra, userText, entry.time) != 0;
    } catch (...) {
        ReportCaughtException("CVsysEventLogMultiThreaded::DoWork", module_, "Unknown error");
        return false;
    }
}

}  // namespace quorbel

using namespace quorbel;

namespace {

void KeepForEver(std::shared_ptr<void> object) {
    static auto* const kept = new std::vector<std::shared_ptr<void>>;
    kept->push_back(std::move(object));
}

}  // namespace

CVsysEventLogMultiThreaded::CVsysEventLogMultiThreaded(std::string module, std::string configDirectory,
                                                       std::string furtherName,
                                                       const WorkerTimeouts& timeouts)
    : CVsysEventLogInterface(std::move(module), std::move(configDirectory), std::move(furtherName)),
      timeouts_(timeouts),
      queue_(std::make_shared<LogQueue>(ModuleName())) {}

CVsysEventLogMultiThreaded::~CVsysEventLogMultiThreaded() {
    CVsysEventLogMultiThreaded::Stop();
    if (!queue_->IsForeign()) return;
    // The worker runs in the parent only: what it was changing at the fork may be half done here, so it is left alone.
    KeepForEver(queue_);
    KeepForEver(Writer());
}

bool CVsysEventLogMultiThreaded::Start() {
    if (queue_->IsForeign() || queue_->IsClosed() || !CVsysEventLogInterface::Start()) return false;
    try {
        StartWorker();
    } catch (...) {
        Stop();
        throw;
    }
    queue_->Open(Writer());
    return true;
}

void CVsysEventLogMultiThreaded::StartWorker() {
    worker_.Create();
    for (int check = 0; check < timeouts_.startChecks; ++check) {
        if (IsRunning()) return;
        std::this_thread::sleep_for(timeouts_.startPause);
    }
    throw CVconException(gettid(), "CVsysEventLogInterface::Start", __LINE__, "Worker thread is not running");
}

bool CVsysEventLogMultiThreaded::Stop() {
    if (queue_->IsForeign() || !queue_->Close()) return true;
    EndWorker();
    dropped_ = queue_->Discard();
    if (dropped_ > 0) {
        ReportLogFailure("CVsysEventLogMultiThreaded::Stop", ModuleName(),
                         std::to_string(dropped_) + " entries were not written");
    }
    return CVsysEventLogInterface::Stop();
}

void CVsysEventLogMultiThreaded::EndWorker() {
    std::size_t done = queue_->Done();
    for (int round = 0; round < timeouts_.stopRounds; ++round) {
        if (worker_.WaitForEnd(timeouts_.stopRound)) return;
        // It counts from the last entry that was written: a worker that gets on may finish.
        const std::size_t before = std::exchange(done, queue_->Done());
        if (done != before) round = -1;
    }
    try {
        worker_.Kill();
    } catch (const CVconException&) {
        return;  // it ended just now
    }
    // Past the beginning of its body the worker needs only the queue, and may be left behind.
    if (!worker_.WaitForEnd(timeouts_.stopRound)) queue_->WaitUntilServed();
}

bool CVsysEventLogMultiThreaded::IsRunning() const {
    return !queue_->IsForeign() && !queue_->IsClosed() && worker_.IsAlive();
}

int CVsysEventLogMultiThreaded::Deliver(LogLevel level, const std::string& message, int extra,
                                        const char* userText) {
    if (queue_->IsForeign()) return 0;
    const NoCancellation untilQueued;
    return queue_->Add(static_cast<unsigned>(level), message, extra, userText) ? 1 : 0;
}

void CVsysEventLogMultiThreaded::DoWork(pthread_t /*threadId*/) {
    // From here on the object may go: Stop does not wait for ever.
    const auto queue = queue_;
    queue->Serve();
}
