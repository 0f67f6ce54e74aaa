#pragma once

#include <atomic>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "CVconEvent.h"
#include "CVconLock.h"
#include "syslib/GuardedWriter.h"

namespace quorbel {

/// An entry between the caller that logged it and the worker that writes it.
struct QueuedEntry {
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
class EventQueue {
public:
    explicit EventQueue(std::string module) : module_(std::move(module)) {}

    /// Lets entries in, which go to `writer`.
    void Open(std::shared_ptr<GuardedWriter> writer);
    /// Stamps and queues an entry; false before Open and after Close.
    bool Add(unsigned level, const std::string& message, int extra, const char* userText);
    /// Lets no more entries in, for good, and has the worker write what is there and end. True when this call
    /// closed it.
    bool Close();
    bool IsClosed();
    /// Lets go of the writer and of the entries that the worker has not taken.
    void Discard();

    /// The worker's part: writes entries in the order of their queueing until the queue is closed and empty.
    /// A kill of the thread takes effect between two entries. An entry whose writing throws is reported to
    /// the system log and left out.
    void Serve();
    /// Waits until a worker is in Serve.
    void WaitUntilServed() const { served_.wait(false); }

private:
    struct Batch {
        std::shared_ptr<GuardedWriter> writer;
        std::vector<QueuedEntry> entries;
        bool last;
    };

    Batch TakeAll();
    void Write(GuardedWriter& writer, const QueuedEntry& entry) const;

    const std::string module_;
    CVconLock lock_;
    CVconEvent wakeUp_;
    std::atomic<bool> served_{false};
    // Under the lock:
    std::shared_ptr<GuardedWriter> writer_;
    std::vector<QueuedEntry> entries_;
    bool closed_ = false;
};

}  // namespace quorbel
