// What an entry under the lock costs beside a bare open, append and close of the same line, with one writer
// and with many. Both ways take turns in one run; the ratios, of time on the clock and of processor time, are the
// medians of the rounds. Then how many entries a database takes.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "CVioFile.h"
#include "syslib/CVsysEventLogFileWriter.h"
#include "syslib/CVsysEventLogInterface.h"
#include "syslib/CVsysEventLogSQLiteWriter.h"
#include "syslib/LogText.h"

using namespace quorbel;

namespace {

constexpr int kRounds = 15;
constexpr int kEntriesPerRound = 3200;
const std::string kMessage = "Data [size=4096] read from the client, nothing left to read\n";

void AppendBare(const std::string& path) {
    const std::string line = LogLine("SOAP", 3, kMessage, 0);
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (descriptor < 0 || write(descriptor, line.data(), line.size()) < 0) std::abort();
    close(descriptor);
}

void AppendByClass(const std::string& path) {
    CVioFile file(path);
    file.Open("a+");
    file.Write(LogLine("SOAP", 3, kMessage, 0));
}

/// Microseconds.
struct Cost {
    double clock;
    double processor;
};

double ProcessorTimeOfChildren() {
    rusage used;
    getrusage(RUSAGE_CHILDREN, &used);
    return (used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1e6 + used.ru_utime.tv_usec +
           used.ru_stime.tv_usec;
}

// What an entry costs when `writers` processes write the round's entries together.
Cost CostOfEntry(int writers, const std::function<void()>& writeOne) {
    const double before = ProcessorTimeOfChildren();
    int start[2];
    if (pipe(start) != 0) std::abort();
    for (int writer = 0; writer < writers; ++writer) {
        if (fork() != 0) continue;
        char go;
        close(start[1]);
        if (read(start[0], &go, 1) != 0) _exit(1);
        for (int entry = 0; entry < kEntriesPerRound / writers; ++entry) writeOne();
        _exit(0);
    }
    usleep(20'000);  // all of them wait at the pipe now
    const auto begin = std::chrono::steady_clock::now();
    close(start[1]);
    while (wait(nullptr) > 0) {
    }
    const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - begin;
    close(start[0]);
    return {spent.count() / kEntriesPerRound, (ProcessorTimeOfChildren() - before) / kEntriesPerRound};
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

void Compare(const std::string& directory, int writers) {
    CVsysEventLogFileWriter log("SOAP");
    log.setProperty("autoAppend", "1");
    log.setFilePath(directory + "/locked.txt");
    std::vector<double> calls;
    std::vector<double> byClass;
    std::vector<double> locked;
    std::vector<double> ratio;
    std::vector<double> processorRatio;
    for (int round = 0; round < kRounds; ++round) {
        const Cost bare = CostOfEntry(writers, [&] { AppendBare(directory + "/bare.txt"); });
        byClass.push_back(CostOfEntry(writers, [&] { AppendByClass(directory + "/class.txt"); }).clock);
        const Cost underLock = CostOfEntry(writers, [&] {
            if (log.DoWork("SOAP", 3, kMessage, -1, nullptr, 0) != 1) std::abort();
        });
        calls.push_back(bare.clock);
        locked.push_back(underLock.clock);
        ratio.push_back(underLock.clock / bare.clock);
        processorRatio.push_back(underLock.processor / bare.processor);
    }
    std::printf("%7d %10.1f us %8.1f us %8.1f us %10.2f %10.2f\n", writers, Median(calls), Median(byClass),
                Median(locked), Median(ratio), Median(processorRatio));
}

void TimeDatabase(const std::string& directory, int writers) {
    std::vector<double> perSecond;
    for (int round = 0; round < 5; ++round) {
        const std::string path =
            directory + "/" + std::to_string(writers) + "-" + std::to_string(round) + ".sdb";
        std::unique_ptr<CVsysEventLogSQLiteWriter> log;
        const Cost entry = CostOfEntry(writers, [&] {
            if (!log) {
                log = std::make_unique<CVsysEventLogSQLiteWriter>("SOAP");
                log->setDbFileName(path);
            }
            if (log->DoWork("SOAP", 3, kMessage, -1, nullptr, 0) != 1) std::abort();
        });
        perSecond.push_back(1e6 / entry.clock);
    }
    std::printf("database, %2d writers: %.0f entries a second in all\n", writers, Median(perSecond));
}

void TimeHiddenEntry(const std::string& directory) {
    const auto log = CVsysEventLogInterface::Create("SOAP", LogThreading::Single, directory);
    if (!log) std::abort();
    constexpr int kCalls = 10'000'000;
    const auto begin = std::chrono::steady_clock::now();
    for (int call = 0; call < kCalls; ++call) log->Trace("Read", "Data [size=%d] read", call);
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - begin;
    std::printf("\nan entry below the threshold: %.1f ns\n", spent.count() / kCalls);
}

void TimeCreation(const std::string& directory) {
    constexpr int kStarts = 500;
    const auto begin = std::chrono::steady_clock::now();
    for (int start = 0; start < kStarts; ++start) {
        const auto log = CVsysEventLogInterface::Create("SOAP", LogThreading::Single, directory);
        if (!log || !log->IsReady()) std::abort();
    }
    const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - begin;
    std::printf("creating the log of a request: %.1f us\n", spent.count() / kStarts);
}

}  // namespace

int main() {
    std::string directory = (std::filesystem::temp_directory_path() / "quorbel-log-bench-XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) return 1;
    CVsysEventLogInterface::SetDefaultLogDirectory(directory);
    std::printf("writers  system calls  file class  under lock  to system calls: clock  processor\n");
    Compare(directory, 1);
    Compare(directory, 32);
    TimeDatabase(directory, 1);
    TimeDatabase(directory, 32);
    TimeHiddenEntry(directory);
    TimeCreation(directory);
    std::filesystem::remove_all(directory);
}
