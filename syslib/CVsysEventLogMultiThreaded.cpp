#include "syslib/CVsysEventLogMultiThreaded.h"

#include <unistd.h>

#include <thread>
#include <utility>

#include "CVException.h"

using namespace quorbel;

CVsysEventLogMultiThreaded::CVsysEventLogMultiThreaded(std::string module, std::string configDirectory,
                                                       std::string furtherName,
                                                       const WorkerPatience& patience)
    : CVsysEventLogInterface(std::move(module), std::move(configDirectory), std::move(furtherName)),
      patience_(patience),
      queue_(std::make_shared<EventQueue>(ModuleName())) {}

CVsysEventLogMultiThreaded::~CVsysEventLogMultiThreaded() {
    CVsysEventLogMultiThreaded::Stop();
}

bool CVsysEventLogMultiThreaded::Start() {
    if (queue_->IsClosed() || !CVsysEventLogInterface::Start()) return false;
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
    for (int check = 0; check < patience_.startChecks; ++check) {
        if (IsRunning()) return;
        std::this_thread::sleep_for(patience_.startPause);
    }
    throw CVconException(gettid(), "CVsysEventLogInterface::Start", __LINE__, "Worker thread is not running");
}

bool CVsysEventLogMultiThreaded::Stop() {
    if (!queue_->Close()) return true;
    EndWorker();
    queue_->Discard();
    return CVsysEventLogInterface::Stop();
}

void CVsysEventLogMultiThreaded::EndWorker() {
    for (int round = 0; round < patience_.stopRounds; ++round) {
        if (worker_.WaitForEnd(patience_.stopRound)) return;
    }
    try {
        worker_.Kill();
    } catch (const CVconException&) {
        return;  // it ended just now
    }
    // Past the beginning of its body the worker needs only the queue, and may be left behind.
    if (!worker_.WaitForEnd(patience_.stopRound)) queue_->WaitUntilServed();
}

bool CVsysEventLogMultiThreaded::IsRunning() const {
    return !queue_->IsClosed() && worker_.IsAlive();
}

int CVsysEventLogMultiThreaded::Write(EventLevel level, const std::string& message, int extra,
                                      const char* userText) {
    return queue_->Add(static_cast<unsigned>(level), message, extra, userText) ? 1 : 0;
}

void CVsysEventLogMultiThreaded::DoWork(pthread_t /*threadId*/) {
    // From here on the object may go: Stop does not wait for ever.
    const auto queue = queue_;
    queue->Serve();
}
