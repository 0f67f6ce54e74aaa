#include "LockFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include "CVException.h"
#include "ProcessMark.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LockHolder.h"
#include "tests/support/RunTogether.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

void TakeOnce(const std::string& path) {
    const LockFile lock(path, {.attempts = 1, .pause = 0ms, .sleep = nullptr});
}

}  // namespace

TEST(LockFile, KeepsOtherProcessesOutUntilItEnds) {
    TempDir dir;
    const std::string path = dir / "soap_log.txt.lock";
    {
        const LockFile held(path);
        EXPECT_EQ(InChildProcess([&] { TakeOnce(path); }), Child::Threw);
    }
    EXPECT_EQ(InChildProcess([&] { TakeOnce(path); }), Child::Finished) << "the lock outlived its object";
    EXPECT_TRUE(fs::exists(path)) << "the lock file itself stays in place";
}

TEST(LockFile, HoldsAlsoWhenItsKeptDescriptorWasGivenToAnotherFile) {
    const TempDir dir;
    const std::string path = fs::canonical(dir.Path()) / "a.lock";
    TakeOnce(path);
    const int other = open(dir.Write("other", "").c_str(), O_RDWR);
    for (int kept = 3; kept < other; ++kept) {
        std::error_code closed;
        if (fs::read_symlink("/proc/self/fd/" + std::to_string(kept), closed) == path) dup2(other, kept);
    }
    const LockFile held(path);
    EXPECT_EQ(InChildProcess([&] { TakeOnce(path); }), Child::Threw);
}

TEST(LockFile, KeepsOutThreadsThatSpellThePathOtherwise) {
    TempDir dir;
    const std::string path = dir / "a.lock";
    fs::create_directory_symlink(dir.Path(), dir / "link");
    const LockFile held(path);
    for (const std::string& spelling : {path, dir / "./a.lock", dir / "link/a.lock"}) {
        std::thread other([&] { EXPECT_THROW(TakeOnce(spelling), CVException) << spelling; });
        other.join();
        EXPECT_THROW(TakeOnce(spelling), CVException) << spelling;
        EXPECT_TRUE(IsLockUsable(spelling)) << spelling;
    }
    RemoveDeadLockFiles(dir.Path());
    EXPECT_EQ(InChildProcess([&] { TakeOnce(path); }), Child::Threw) << "one of these dropped the lock";
}

TEST(LockFile, GivesUpWhenAllPausesAreOver) {
    TempDir dir;
    const LockHolder holder(dir / "a.lock");
    std::vector<std::chrono::microseconds> waits;
    const LockRetry minute = {
        .attempts = 2000, .pause = 30ms, .sleep = [&](auto wait) { waits.push_back(wait); }};
    try {
        const LockFile lock(dir / "a.lock", minute);
        FAIL() << "two processes hold one lock";
    } catch (const CVException& failure) {
        EXPECT_EQ(failure.GetMessage(), "LockFile Creation Failed");
        EXPECT_EQ(failure.GetFile(), "LockFile");
    }
    EXPECT_EQ(std::accumulate(waits.begin(), waits.end(), 0us), 60s);
    EXPECT_LT(waits.front(), 1ms);
    EXPECT_LT(*std::max_element(waits.begin(), waits.end()), 3ms);
}

TEST(LockFile, IsNotHeldByAChildOfItsHolder) {
    TempDir dir;
    const std::string path = dir / "a.lock";
    auto held = std::make_unique<LockFile>(path);
    const auto child = [&] {
        if (held->IsHeld()) throw 1;
        held.reset();
        LockHolder other(path);  // waits until the parent has freed it
        held = std::make_unique<LockFile>(dir / "b.lock");
    };
    const pid_t pid = StartChild(child);
    EXPECT_EQ(InChildProcess([&] { TakeOnce(path); }), Child::Threw)
        << "the child's end dropped the parent's lock";
    held.reset();
    EXPECT_EQ(WaitForChild(pid), Child::Finished);
}

TEST(ProcessMark, KnowsAChildWhateverCallMadeIt) {
    const ProcessMark mark;
    const pid_t child = _Fork();  // calls no handlers
    if (child == 0) _exit(mark.IsOurs() || OwnProcess() != getpid() ? 1 : 0);
    EXPECT_EQ(WaitForChild(child), Child::Finished);
    EXPECT_TRUE(mark.IsOurs());
}

TEST(LockFile, KeepsTheLockThatAChildTookForItself) {
    TempDir dir;
    const std::string path = dir / "a.lock";
    auto inherited = std::make_unique<LockFile>(path);
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    const pid_t pid = StartChild([&] {
        close(gate[1]);
        char none;
        while (read(gate[0], &none, 1) > 0) {
        }
        const LockFile own(path);
        inherited.reset();
        if (InChildProcess([&] { TakeOnce(path); }) != Child::Threw) throw 1;
    });
    close(gate[0]);
    inherited.reset();
    close(gate[1]);
    EXPECT_EQ(WaitForChild(pid), Child::Finished);
}

TEST(LockFile, FailsAtOnceWhereWaitingCannotHelp) {
    TempDir dir;
    dir.Write("file", "");
    fs::create_directory(dir / "directory");
    fs::create_symlink("loop", dir / "loop");
    const LockRetry retry = {.sleep = [](auto) { ADD_FAILURE() << "waited"; }};
    for (const char* name : {"missing/a.lock", "file/a.lock", "directory", "loop"}) {
        EXPECT_THROW(LockFile(dir / name, retry), CVException) << name;
        EXPECT_FALSE(IsLockUsable(dir / name)) << name;
    }
    EXPECT_TRUE(IsLockUsable(dir / "new.lock"));
}

TEST(LockFile, IsUnusableWithoutRights) {
    if (geteuid() != 0) GTEST_SKIP() << "needs another user";
    TempDir dir;
    dir.Write("old.lock", "");
    fs::permissions(dir.Path(), fs::perms(0755));
    const auto asNobody = [&] {
        if (setuid(65534) != 0 || IsLockUsable(dir / "new.lock") || IsLockUsable(dir / "old.lock")) throw 1;
        RemoveDeadLockFiles(dir.Path());
    };
    EXPECT_EQ(InChildProcess(asNobody), Child::Finished);
    EXPECT_THAT(dir.Names(), testing::ElementsAre("old.lock"));
}

TEST(LockFile, LetsOtherUsersOfTheGroupIn) {
    TempDir dir;
    const mode_t mask = umask(077);
    TakeOnce(dir / "a.lock");
    umask(mask);
    struct stat status = {};
    stat((dir / "a.lock").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0664U);
}

TEST(RemoveDeadLockFiles, LeavesLocksThatAreHeldAndAllElse) {
    TempDir dir;
    const LockHolder holder(dir / "held.lock");
    const LockFile ours(dir / "ours.lock");
    TakeOnce(dir / "used.lock");  // and will be again
    dir.Write("dead.lock", "");
    dir.Write("yarn.lock", "of another program");
    dir.Write("a.lock.txt", "");
    fs::create_directory(dir / "directory.lock");
    fs::create_symlink("a.lock.txt", dir / "link.lock");
    RemoveDeadLockFiles(dir.Path());
    EXPECT_THAT(dir.Names(), testing::ElementsAre("a.lock.txt", "directory.lock", "held.lock", "link.lock",
                                                  "ours.lock", "used.lock", "yarn.lock"));
    EXPECT_THROW(RemoveDeadLockFiles(dir / "missing"), CVioException);
}

// A lock on a file that another process has just deleted keeps out nobody: each loss of the count below is
// two processes inside at once.
TEST(RemoveDeadLockFiles, NeverLetsTwoProcessesIn) {
    constexpr int kProcesses = 8;
    constexpr int kRounds = 50;
    TempDir dir;
    const std::string counter = dir.Write("counter", "0");
    const auto work = [&](int) {
        for (int round = 0; round < kRounds; ++round) {
            const LockFile lock(dir / "a.lock");
            const int count = std::stoi(ReadFile(counter));
            dir.Write("counter", std::to_string(count + 1));
        }
    };
    // Those that work keep the file open and leave it alone from then on: others delete it all the time.
    const auto clean = [&] {
        for (int round = 0; round < 1'000'000; ++round) RemoveDeadLockFiles(dir.Path());
    };
    const pid_t cleaner = StartChild(clean);
    RunTogether(kProcesses, work);
    kill(cleaner, SIGKILL);
    WaitForChild(cleaner);
    EXPECT_EQ(ReadFile(counter), std::to_string(kProcesses * kRounds));
}
