#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <random>
#include <sstream>
#include <thread>

#include "syslib/CVsysEventLogInterface.h"
#include "syslib/LogRegistry.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RunTogether.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

constexpr int kProcesses = 32;
constexpr int kEntries = 20;

std::string Entry(int process, int number) {
    return "process " + std::to_string(process) + " entry " + std::to_string(number) + " end";
}

// Creates its log anew every few entries: the clean-up of each creation is what could take a lock file away
// from under a writer.
void RunProgram(const TempDir& dir, int process) {
    std::unique_ptr<CVsysEventLogInterface> log;
    for (int number = 0; number < kEntries; ++number) {
        if (number % 4 == 0) {
            log.reset();
            log = CVsysEventLogInterface::Create("SOAP", LogThreading::Single, dir.Path());
            if (!log || !log->IsReady()) throw 0;
        }
        if (log->Info(nullptr, "%s", Entry(process, number).c_str()) != 1) throw 0;
    }
}

// How often each line stands in the log and its archives, without time, module and tag.
std::map<std::string, int> LinesOf(const TempDir& dir) {
    std::map<std::string, int> lines;
    for (const auto& name : dir.Names()) {
        if (!name.starts_with("soap_log.txt") || name.ends_with(".lock")) continue;
        std::istringstream file(ReadFile(dir / name));
        for (std::string line; std::getline(file, line);) {
            if (line.find(" Archiving ") == std::string::npos) ++lines[line.substr(line.find("] ") + 2)];
        }
    }
    return lines;
}

}  // namespace

// The file is archived every few entries while programs start, end and are killed.
TEST(SharedLog, IsFoundInAChildThatIsForkedBesideAThreadThatLooksItUp) {
    std::atomic<bool> done{false};
    std::thread busy([&] {
        while (!done) LogRegistry::OfProcess().Default();
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(InChildProcess([] {
                      alarm(5);
                      LogRegistry::OfProcess().Default();
                  }),
                  Child::Finished);
    }
    done = true;
    busy.join();
}

TEST(SharedLog, HoldsEachEntryOfEveryProgramThatEndedExactlyOnce) {
    const TempDir dir;
    dir.Write("cvlogs.ini", "[SOAP]\nfilePath=" + dir.Path() +
                                "/soap_log.txt\nbytesPerFiles=300\nnumFiles=1000\nautoAppend=1\n");
    const std::vector<pid_t> children =
        StartTogether(kProcesses, [&](int process) { RunProgram(dir, process); });
    std::minstd_rand random(std::random_device{}());
    for (int kills = 0; kills < kProcesses / 4; ++kills) {
        usleep(random() % 5000);
        kill(children[random() % children.size()], SIGKILL);
    }

    std::vector<bool> ended;
    ended.reserve(children.size());
    for (const pid_t child : children) ended.push_back(WaitForChild(child) == Child::Finished);
    std::map<std::string, int> lines = LinesOf(dir);
    EXPECT_GT(dir.Names().size(), 10U) << "there were no archives";
    for (int process = 0; process < kProcesses; ++process) {
        for (int number = 0; number < kEntries; ++number) {
            const int found = lines[Entry(process, number)];
            EXPECT_TRUE(found == 1 || (found == 0 && !ended[process]))
                << Entry(process, number) << ": " << found;
            lines.erase(Entry(process, number));
        }
    }
    for (const auto& [line, count] : lines) ADD_FAILURE() << "torn line: " << line;
}
