#include "syslib/EventQueue.h"

#include <utility>

#include "CVconThread.h"
#include "NoCancellation.h"
#include "syslib/LogReport.h"

namespace quorbel {

void EventQueue::Open(std::shared_ptr<GuardedWriter> writer) {
    const ScopedLock guard(&lock_);
    writer_ = std::move(writer);
}

bool EventQueue::Add(unsigned level, const std::string& message, int extra, const char* userText) {
    const ScopedLock guard(&lock_);
    if (closed_ || !writer_) return false;
    entries_.push_back({level, message, extra, userText ? userText : "", std::time(nullptr)});
    wakeUp_.Signal();
    return true;
}

bool EventQueue::Close() {
    const ScopedLock guard(&lock_);
    if (std::exchange(closed_, true)) return false;
    wakeUp_.Signal();
    return true;
}

bool EventQueue::IsClosed() {
    const ScopedLock guard(&lock_);
    return closed_;
}

void EventQueue::Discard() {
    const Batch discarded = TakeAll();
    const ScopedLock guard(&lock_);
    writer_.reset();
}

EventQueue::Batch EventQueue::TakeAll() {
    const ScopedLock guard(&lock_);
    return {writer_, std::exchange(entries_, {}), closed_};
}

void EventQueue::Serve() {
    served_ = true;
    served_.notify_all();
    while (wakeUp_.Wait() == CVconEvent::Wake::Signalled) {
        // Writers use C libraries, and letting go of the last hold on one runs its destructor: neither may be
        // left in the middle. Declared before the batch, so that it covers its end.
        const NoCancellation untilWritten;
        const Batch batch = TakeAll();
        for (const QueuedEntry& entry : batch.entries) {
            if (CVconThread::KillRequested()) return;
            Write(*batch.writer, entry);
        }
        if (batch.last) return;
    }
}

void EventQueue::Write(GuardedWriter& writer, const QueuedEntry& entry) const {
    const char* const userText = entry.userText.empty() ? nullptr : entry.userText.c_str();
    try {
        writer.Write(module_, entry.level, entry.message, entry.extra, userText, entry.time);
    } catch (...) {
        ReportCaughtException("CVsysEventLogMultiThreaded::DoWork", module_, "Unknown error");
    }
}

}  // namespace quorbel
