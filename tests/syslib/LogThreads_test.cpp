#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include "CVconThread.h"
#include "LockFile.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "syslib/CVsysEventLogInterface.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

constexpr int kThreads = 4;
constexpr int kEntries = 50;

void RunThreads(const std::function<void(int thread)>& body) {
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(body, thread);
    for (auto& thread : threads) thread.join();
}

void WriteConfig(const TempDir& dir, const std::string& module, const std::string& folder = "") {
    dir.Write(folder + "cvlogs.ini", "[" + module + "]\nfilePath=" + dir.Path() +
                                         "/l.txt\nbytesPerFiles=2000\nnumFiles=100\nautoAppend=1\n");
}

// The message of each line, in the order of the files.
std::vector<std::string> MessagesOf(const TempDir& dir) {
    std::string text;
    for (int number = 100; number > 0; --number) text += ReadFile(dir / ("l.txt." + std::to_string(number)));
    std::istringstream lines(text + ReadFile(dir / "l.txt"));
    std::vector<std::string> messages;
    for (std::string line; std::getline(lines, line);) {
        if (line.find(" Archiving ") == std::string::npos)
            messages.push_back(line.substr(line.find("] ") + 2));
    }
    return messages;
}

/// Logs for as long as it is let.
class EndlessLogger : public CVconDelegate {
public:
    explicit EndlessLogger(CVsysEventLogInterface& log) : log_(log) {}

    void DoWork(pthread_t) override {
        for (;;) entries += log_.Info(nullptr, "%d", entries.load());
    }

    std::atomic<int> entries{0};

private:
    CVsysEventLogInterface& log_;
};

}  // namespace

TEST(LogThreads, WriteThroughOneLogWhileItsSettingsChange) {
    const TempDir dir;
    WriteConfig(dir, "Threads");
    const auto log = CVsysEventLogInterface::Create("Threads", LogThreading::Single, dir.Path());
    ASSERT_TRUE(log && log->IsReady());
    RunThreads([&](int thread) {
        for (int number = 0; number < kEntries; ++number) {
            log->SetThreshold(number % 2 == 0 ? LogLevel::Info : LogLevel::Error);
            log->Fatal(nullptr, "%d %d", thread, number);
            CVsysEventLogInterface::GetInstance("Threads")->IsReady();
        }
    });

    std::map<int, int> next;
    for (const auto& message : MessagesOf(dir)) {
        std::istringstream fields(message);
        int thread = -1;
        int number = -1;
        fields >> thread >> number;
        EXPECT_EQ(number, next[thread]++) << "the entries of a thread keep their order";
    }
    for (int thread = 0; thread < kThreads; ++thread) EXPECT_EQ(next[thread], kEntries);
}

// Each log locks the file through an object of its own: only the table of locked paths keeps the threads
// apart.
TEST(LogThreads, WriteToOneFileThroughLogsOfTheirOwnThatComeAndGo) {
    const TempDir dir;
    RunThreads([&](int thread) {
        const std::string config = "config" + std::to_string(thread) + "/";
        WriteConfig(dir, "M", config);
        for (int number = 0; number < kEntries; ++number) {
            const auto log = CVsysEventLogInterface::Create("M", LogThreading::Single, dir / config);
            EXPECT_EQ(log->Info(nullptr, "%d %d", thread, number), 1);
        }
    });
    const auto messages = MessagesOf(dir);
    EXPECT_EQ(messages.size(), std::size_t{kThreads} * kEntries);
    EXPECT_EQ(std::set(messages.begin(), messages.end()).size(), messages.size());
}

TEST(LogThreads, StopTheLogOthersAreWritingTo) {
    const TempDir dir;
    WriteConfig(dir, "Stopped");
    const auto log = CVsysEventLogInterface::Create("Stopped", LogThreading::Single, dir.Path());
    std::atomic<int> written = 0;
    RunThreads([&](int thread) {
        for (int number = 0; number < kEntries; ++number) {
            if (thread == 0 && number == kEntries / 4) log->Stop();
            written += log->Info(nullptr, "%d %d", thread, number);
        }
    });
    EXPECT_EQ(MessagesOf(dir).size(), static_cast<std::size_t>(written)) << "told as written, but not there";
}

TEST(LogThreads, AreKilledBetweenTwoEntriesOfAnyWriter) {
    for (const char* writer : {"file", "sqlite"}) {
        const TempDir dir;
        dir.Write("cvlogs.ini", "[Killed]\nautoAppend=1\nfilePath=" + dir.Path() +
                                    "/l.txt\nwriter=" + writer + "\ndbfilename=" + dir.Path() + "/l.sdb\n");
        const auto log = CVsysEventLogInterface::Create("Killed", LogThreading::Single, dir.Path());
        ASSERT_TRUE(log && log->IsReady());
        EndlessLogger logger(*log);
        constexpr int kKills = 20;
        for (int kill = 0; kill < kKills; ++kill) {
            CVconThread thread(&logger);
            const int before = logger.entries;
            thread.Create();
            ASSERT_TRUE(Eventually([&] { return logger.entries > before; }));
            thread.Kill();
            ASSERT_TRUE(thread.WaitForEnd(std::chrono::seconds(10))) << writer << ": it loops on";
        }
        EXPECT_EQ(log->Info(nullptr, "after"), 1) << writer << ": something was left locked";
    }
}

TEST(LogThreads, GiveUpTheDatabaseThatTheyWaitForWhenTheyAreKilled) {
    const TempDir dir;
    dir.Write("cvlogs.ini", "[Waits]\nwriter=sqlite\ndbfilename=" + dir.Path() + "/l.sdb\n");
    const auto log = CVsysEventLogInterface::Create("Waits", LogThreading::Single, dir.Path());
    ASSERT_EQ(log->Info(nullptr, "before"), 1);
    CVSQLite3Database holder(dir / "l.sdb");
    ASSERT_TRUE(holder.BeginImmediateTransaction("", kTryOnce));
    EndlessLogger logger(*log);
    CVconThread thread(&logger);
    thread.Create();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    thread.Kill();
    ASSERT_TRUE(thread.WaitForEnd(std::chrono::seconds(20)));
    EXPECT_EQ(logger.entries, 0);
    ASSERT_TRUE(holder.RollbackTransaction("", kTryOnce));
    EXPECT_EQ(log->Info(nullptr, "after"), 1);
}

TEST(LogThreads, AskWhetherTheLogIsReadyWhileItIsBusy) {
    const TempDir dir;
    WriteConfig(dir, "Busy");
    const auto log = CVsysEventLogInterface::Create("Busy", LogThreading::Single, dir.Path());
    std::atomic<bool> written{false};
    std::thread writer;
    {
        const LockFile held(dir / "l.txt.lock");
        writer = std::thread([&] {
            log->Info(nullptr, "waits");
            written = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_TRUE(log->IsReady());
        EXPECT_FALSE(written) << "the answer came after the wait";
    }
    writer.join();
}
