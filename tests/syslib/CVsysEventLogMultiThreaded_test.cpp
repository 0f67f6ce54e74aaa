#include "syslib/CVsysEventLogMultiThreaded.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "CVException.h"
#include "CVconEvent.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::atomic<int> createError{0};

}  // namespace

// The linker sends the thread class's call here.
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                          void* argument) {
    return createError != 0 ? createError.load() : __real_pthread_create(thread, attributes, start, argument);
}
}

namespace {

/// What a writer was given; outlives it.
struct Record {
    std::mutex mutex;
    std::vector<std::string> messages;
    std::vector<std::time_t> times;
    CVconEvent letGo;  // ends the writing of an entry "stuck"
    std::atomic<bool> stuck{false};
    std::atomic<bool> deleted{false};

    std::vector<std::string> Messages() {
        const std::lock_guard guard(mutex);
        return messages;
    }
};

class RecordingWriter : public CVsysEventLogWriterInterface {
public:
    explicit RecordingWriter(Record& record, bool ready = true) : record_(record), ready_(ready) {}
    ~RecordingWriter() override { record_.deleted = true; }

    bool setProperty(const std::string&, const std::string&) override { return true; }
    int DoWork(const std::string& module, unsigned level, const std::string& message, int extra,
               const char* userText, std::time_t time) override {
        if (message == "failing") throw std::runtime_error("disk on fire");
        if (message == "unknown") throw 1;
        if (message == "stuck") {
            record_.stuck = true;
            record_.letGo.Wait();
        }
        if (message == "waits") {
            while (!CVconThread::KillRequested()) std::this_thread::sleep_for(1ms);
            return 0;
        }
        if (message == "slow") std::this_thread::sleep_for(5ms);
        const std::lock_guard guard(record_.mutex);
        record_.times.push_back(time);
        record_.messages.push_back(module + "|" + std::to_string(level) + "|" + message + "|" +
                                   std::to_string(extra) + "|" + (userText ? userText : "null"));
        return 1;
    }
    bool isReady() override { return ready_; }

private:
    Record& record_;
    bool ready_;
};

// A stop that has to wait for the worker waits for as long as the test runs.
constexpr WorkerTimeouts kEndless{.stopRound = 1h};
constexpr WorkerTimeouts kHurried{.startPause = 1ms, .stopRound = 2ms};

std::unique_ptr<CVsysEventLogMultiThreaded> LogTo(Record& record, const WorkerTimeouts& patience = kEndless) {
    auto log = std::make_unique<CVsysEventLogMultiThreaded>("M", "", "", patience);
    log->UseWriter(std::make_unique<RecordingWriter>(record));
    return log;
}

int Queue(CVsysEventLogInterface& log, const std::string& message) {
    return log.Write(LogLevel::Info, message, -1, nullptr);
}

}  // namespace

TEST(CVsysEventLogMultiThreaded, WritesWhatEightThreadsQueuedBeforeAStop) {
    constexpr int kThreads = 8, kEntries = 1250;
    Record record;
    const auto log = LogTo(record);
    ASSERT_TRUE(log->Start());
    std::vector<std::thread> callers;
    callers.reserve(kThreads);
    for (int caller = 0; caller < kThreads; ++caller) {
        callers.emplace_back([&log, caller] {
            for (int i = 0; i < kEntries; ++i)
                EXPECT_EQ(log->Write(LogLevel::Warn, "", i, &"abcdefgh"[caller]), 1);
        });
    }
    for (auto& caller : callers) caller.join();
    EXPECT_TRUE(log->Stop());

    EXPECT_EQ(record.messages.size(), std::size_t{kThreads} * kEntries);
    std::map<std::string, int> next;
    for (const auto& message : record.messages) {
        const auto userText = message.substr(message.rfind('|'));
        EXPECT_EQ(message, "M|4||" + std::to_string(next[userText]++) + userText) << "out of order";
    }
}

TEST(CVsysEventLogMultiThreaded, TakesEntriesFromStartToStopOnly) {
    Record record;
    const auto log = LogTo(record);
    EXPECT_EQ(Queue(*log, "early"), 0);
    EXPECT_FALSE(log->IsRunning());

    ASSERT_TRUE(log->Start());
    EXPECT_TRUE(log->IsRunning());
    EXPECT_FALSE(log->Start()) << "started twice";
    EXPECT_EQ(log->Info("here", "%d", 7), 1);

    EXPECT_TRUE(log->Stop());
    EXPECT_FALSE(log->IsRunning());
    EXPECT_EQ(Queue(*log, "late"), 0);
    EXPECT_EQ(log->Info(nullptr, "late"), 0);
    EXPECT_FALSE(log->Start()) << "started after a stop";
    EXPECT_TRUE(log->Stop());
    EXPECT_THAT(record.messages, ElementsAre("M|3|here 7|-1|null"));
    EXPECT_TRUE(record.deleted) << "the log still holds its writer";
    const auto stopped = LogTo(record);
    stopped->Stop();
    EXPECT_FALSE(stopped->Start());
}

TEST(CVsysEventLogMultiThreaded, StampsAnEntryWhenItIsQueued) {
    Record record;
    const auto log = LogTo(record);
    log->Start();
    Queue(*log, "stuck");
    const std::time_t before = std::time(nullptr);
    Queue(*log, "queued");
    const std::time_t after = std::time(nullptr);
    ASSERT_TRUE(Eventually([&] { return std::time(nullptr) > after; }));
    record.letGo.Signal();
    log->Stop();

    ASSERT_EQ(record.times.size(), 2u);
    EXPECT_GE(record.times[1], before);
    EXPECT_LE(record.times[1], after);
}

TEST(CVsysEventLogMultiThreaded, LeavesOutEntriesWhoseWritingThrows) {
    Record record;
    TakeSystemLog();
    const auto log = LogTo(record);
    log->Start();
    for (const char* message : {"stuck", "failing", "unknown", "last"}) Queue(*log, message);
    record.letGo.Signal();
    log->Stop();
    EXPECT_THAT(record.messages, ElementsAre(HasSubstr("stuck"), HasSubstr("last")));
    EXPECT_THAT(TakeSystemLogTexts(),
                ElementsAre("M-ERROR CVsysEventLogMultiThreaded::DoWork: disk on fire",
                            "M-ERROR CVsysEventLogMultiThreaded::DoWork: Unknown error"));
}

TEST(CVsysEventLogMultiThreaded, LeavesAWorkerThatIsStuckForGoodBehind) {
    Record record;
    TakeSystemLog();
    auto log = LogTo(record, kHurried);
    log->Start();
    Queue(*log, "stuck");
    Queue(*log, "lost");
    ASSERT_TRUE(Eventually([&] { return record.stuck.load(); }));
    EXPECT_TRUE(log->Stop());
    EXPECT_FALSE(log->IsRunning());
    EXPECT_EQ(log->DroppedEntries(), 2u);
    EXPECT_THAT(TakeSystemLogTexts(),
                ElementsAre("M-ERROR CVsysEventLogMultiThreaded::Stop: 2 entries were not written"));
    log.reset();
    EXPECT_FALSE(record.deleted) << "the writer is in use";

    record.letGo.Signal();
    EXPECT_TRUE(Eventually([&] { return record.deleted.load(); })) << "the worker has not ended";
    EXPECT_THAT(record.Messages(), ElementsAre(HasSubstr("stuck")));
}

TEST(CVsysEventLogMultiThreaded, CountsTheEntryThatItsKilledWorkerGivesUp) {
    Record record;
    const auto log = LogTo(record, kHurried);
    log->Start();
    for (const char* message : {"written", "waits", "lost"}) Queue(*log, message);
    EXPECT_TRUE(log->Stop());
    EXPECT_EQ(log->DroppedEntries(), 2u);
    EXPECT_EQ(record.Messages().size(), 1u);
}

TEST(CVsysEventLogMultiThreaded, WaitsForAWorkerThatGetsOn) {
    Record record;
    const auto log = LogTo(record, {.startPause = 1ms, .stopRound = 4ms});
    log->Start();
    for (int entry = 0; entry < 40; ++entry) Queue(*log, "slow");
    EXPECT_TRUE(log->Stop()) << "five times as long as a stop waits for a worker that does not";
    EXPECT_EQ(record.Messages().size(), 40u);
    EXPECT_EQ(log->DroppedEntries(), 0u);
}

TEST(CVsysEventLogMultiThreaded, RefusesEntriesInAChildOfItsProcess) {
    Record record;
    auto log = LogTo(record);
    log->Start();
    Queue(*log, "stuck");
    ASSERT_TRUE(Eventually([&] { return record.stuck.load(); }));
    EXPECT_EQ(InChildProcess([&] {
                  if (Queue(*log, "nobody writes it") != 0 || log->IsRunning() || log->Start()) throw 0;
                  log->Stop();
                  log.reset();
              }),
              Child::Finished);
    Queue(*log, "parent's");
    record.letGo.Signal();
    log->Stop();
    EXPECT_THAT(record.Messages(), ElementsAre(HasSubstr("stuck"), HasSubstr("parent's")));
}

TEST(CVsysEventLogMultiThreaded, StopsWhenItIsDeleted) {
    Record record;
    auto log = LogTo(record);
    log->Start();
    Queue(*log, "queued");
    log.reset();
    EXPECT_EQ(record.messages.size(), 1u);
}

TEST(CVsysEventLogMultiThreaded, DoesNotStartWithAWriterThatIsNotReady) {
    Record record;
    CVsysEventLogMultiThreaded log("M", "");
    log.UseWriter(std::make_unique<RecordingWriter>(record, false));
    EXPECT_FALSE(log.Start());
    EXPECT_FALSE(log.IsRunning());
    EXPECT_EQ(Queue(log, "refused"), 0);
}

TEST(CVsysEventLogMultiThreaded, ReportsAWorkerThatDoesNotComeUp) {
    struct NeverRunning : CVsysEventLogMultiThreaded {
        NeverRunning() : CVsysEventLogMultiThreaded("M", "", "", kHurried) {}
        bool IsRunning() const override {
            ++checks;
            return false;
        }
        mutable int checks = 0;
    };
    Record record;
    NeverRunning log;
    log.UseWriter(std::make_unique<RecordingWriter>(record));
    try {
        log.Start();
        FAIL() << "started";
    } catch (const CVconException& exception) {
        EXPECT_EQ(exception.GetMessage(), "Worker thread is not running");
        EXPECT_EQ(exception.GetFile(), "CVsysEventLogInterface::Start");
    }
    EXPECT_EQ(log.checks, 5);
    EXPECT_EQ(Queue(log, "refused"), 0);
}

TEST(CVsysEventLogMultiThreaded, PassesOnThatTheSystemGivesNoThread) {
    Record record;
    const auto log = LogTo(record);
    createError = EAGAIN;
    try {
        log->Start();
        FAIL() << "started";
    } catch (const CVconException& exception) {
        EXPECT_EQ(exception.GetMessage(), "Create Thread Failed");
    }
    createError = 0;
    EXPECT_EQ(log->Info(nullptr, "refused"), 0);
    EXPECT_TRUE(record.deleted);
}

TEST(CVsysEventLogMultiThreaded, IsWhatAModuleGetsThatAsksForThreads) {
    const TempDir dir;
    dir.Write("cvlogs.ini", "[M]\nfilePath=" + dir.Path() + "/l.txt\nautoAppend=1\n");
    const auto log = CVsysEventLogInterface::Create("M", LogThreading::Multi, dir.Path());
    ASSERT_TRUE(log);
    EXPECT_EQ(log->Fatal(nullptr, "early"), 0);
    ASSERT_TRUE(log->Start());
    EXPECT_EQ(CVsysEventLogInterface::GetInstance("M")->Fatal(nullptr, "queued"), 1);
    log->Stop();
    EXPECT_THAT(ReadFile(dir / "l.txt"), testing::EndsWith("[FATAL] queued\n"));
}
