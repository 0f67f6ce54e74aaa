#include "CVioFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <functional>
#include <thread>

#include "CVException.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

/// The message of the CVioException that `step` throws, "" when it throws none.
std::string MessageOf(const std::function<void()>& step) {
    try {
        step();
    } catch (const CVioException& failure) {
        EXPECT_EQ(failure.GetFile(), "CVioFile");
        EXPECT_EQ(failure.GetSystemMessage(), std::strerror(errno)) << failure.GetMessage();
        return failure.GetMessage();
    }
    return {};
}

void LockOnce(const std::string& path, const std::string& mode, char kind) {
    CVioFile file(path);
    file.Open(mode);
    file.Lock(kind, false);
}

}  // namespace

TEST(CVioFile, NamesWhatFailed) {
    TempDir dir;
    CVioFile closed(dir / "missing");
    CVioFile file(dir.Write("file", "one\n"));
    CVioFile directory(dir.Path());
    file.Open("r");
    directory.Open("r");
    char buffer[8];
    const struct {
        const char* message;
        std::function<void()> step;
    } cases[] = {
        {"File Open Failed", [&] { closed.Open("r"); }},
        {"File Was Already Open", [&] { file.Open("w"); }},
        {"File Get File Number Failed", [&] { closed.Lock('r', false); }},
        {"File Lock Failed", [&] { file.Lock('w', false); }},
        {"File Lock Failed", [&] { file.Lock('x', false); }},
        {"File not opened for reading", [&] { closed.GetLine(buffer, sizeof buffer); }},
        {"File Get Lines Failed", [&] { directory.GetLine(buffer, sizeof buffer); }},
        {"File not opened for reading", [&] { closed.Read(buffer, 1); }},
        {"File Read Failed", [&] { directory.Read(buffer, 1); }},
        {"File not opened for writting", [&] { closed.Write("x"); }},
        {"File Write Failed", [&] { file.Write("x"); }},
        {"File Flush Failed", [&] { closed.Flush(); }},
        {"File Get File Number Failed", [&] { closed.Truncate(0); }},
        {"File Truncate Failed", [&] { file.Truncate(0); }},
        {"File Get State Failed", [&] { closed.GetSize(); }},
        {"File Get State Failed", [&] { closed.GetModificationTime(); }},
        {"File utime Failed", [&] { closed.SetTime(1, 2); }},
    };
    for (const auto& c : cases) EXPECT_EQ(MessageOf(c.step), c.message);
    EXPECT_EQ(file.GetMode(), "r");
    EXPECT_EQ(file.GetLine(buffer, sizeof buffer), 4U) << "the first stream is no longer usable";
    EXPECT_FALSE(closed.IsDirectory());
    EXPECT_TRUE(directory.IsDirectory());
}

TEST(CVioFile, ReadsLinesUntilTheEnd) {
    TempDir dir;
    CVioFile file(dir.Write("file", "\nlonger than that\nlast"));
    file.Open("r");
    char line[9];
    EXPECT_EQ(file.GetLine(line, 1), 0U);
    for (const char* expected : {"\n", "longer t", "han that", "\n", "last", ""}) {
        EXPECT_EQ(file.GetLine(line, sizeof line), std::strlen(expected));
        EXPECT_STREQ(line, expected);
    }
}

TEST(CVioFile, GoesOnAfterALineThatBeginsWithAZeroByte) {
    TempDir dir;
    CVioFile file(dir.Write("file", std::string("\0x\nnext", 7)));
    file.Open("r");
    char line[9];
    EXPECT_EQ(file.GetLine(line, sizeof line), 3U);
    EXPECT_EQ(file.GetLine(line, sizeof line), 4U);
}

TEST(CVioFile, HandsEachWriteToTheKernelAtOnce) {
    TempDir dir;
    CVioFile file(dir / "file");
    file.Open("w+");
    file.Write("a%s", 3);
    file.Write(std::string("b"));
    file.WriteFormatted("%d-%s", 42, std::string(5000, 'c').c_str());
    EXPECT_EQ(ReadFile(file.GetPath()), "a%sb42-" + std::string(5000, 'c'));
    file.Truncate(2);
    char text[4] = {};
    EXPECT_EQ(file.Read(text, 1), 1U);
    file.Write("Z");
    EXPECT_EQ(ReadFile(file.GetPath()), "aZ");
    EXPECT_EQ(file.GetSize(), 2);
    file.SetTime(1000, 2000);
    EXPECT_EQ(file.GetModificationTime(), 2000);
}

TEST(CVioFile, ReportsAFullDiskAndWritesNothingLater) {
    TempDir dir;
    const auto fill = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit full = {4, RLIM_INFINITY};
        const rlimit free = {RLIM_INFINITY, RLIM_INFINITY};
        CVioFile file(dir / "file");
        file.Open("w");
        setrlimit(RLIMIT_FSIZE, &full);
        const std::string message = MessageOf([&] { file.Write("123456"); });
        setrlimit(RLIMIT_FSIZE, &free);
        file.Close();
        if (message != "File Write Failed") throw 1;
    };
    EXPECT_EQ(InChildProcess(fill), Child::Finished);
    EXPECT_EQ(ReadFile(dir / "file"), "1234") << "closing wrote what Write had refused";
}

TEST(CVioFile, LocksOutOtherProcesses) {
    TempDir dir;
    const std::string path = dir.Write("file", "x");
    const auto lock = [&](const char* mode, char kind) {
        return InChildProcess([&] { LockOnce(path, mode, kind); });
    };
    CVioFile file(path);
    file.Open("r+");
    file.Lock('r', true);
    EXPECT_EQ(lock("r", 'r'), Child::Finished);
    EXPECT_EQ(lock("r+", 'w'), Child::Threw);
    file.Lock('w', true);
    EXPECT_EQ(lock("r", 'r'), Child::Threw);
    file.Unlock();
    EXPECT_EQ(lock("r+", 'w'), Child::Finished);
}

TEST(CVioFile, ReadsAnewUnderEachLock) {
    TempDir dir;
    CVioFile file(dir.Write("file", ""));
    file.Open("r+");
    for (const char* content : {"old\nrest", "new\nrest"}) {
        dir.Write("file", content);
        char line[8];
        file.Lock('r', true);
        file.GetLine(line, sizeof line);
        EXPECT_EQ(line, std::string(content, 4));
        file.Unlock();
    }
}

TEST(CVioFile, KeepsTheInProcessLockAfterARefusalUntilUnlock) {
    TempDir dir;
    CVioFile file(dir.Write("file", "x"));
    file.Open("r");
    EXPECT_EQ(MessageOf([&] { file.Lock('w', false); }), "File Lock Failed");
    file.Unlock();
    file.Unlock();  // harmless
    std::thread other([&] {
        file.Lock('r', false);  // would hang on a lock left behind
        file.Unlock();
    });
    other.join();
}

TEST(CVioFile, KeepsItsLockWhenAnotherThreadUnlocks) {
    TempDir dir;
    CVioFile file(dir.Write("file", "x"));
    file.Open("r+");
    file.Lock('w', true);
    std::thread([&] { file.Unlock(); }).join();
    EXPECT_EQ(InChildProcess([&] { LockOnce(file.GetPath(), "r", 'r'); }), Child::Threw);
}

TEST(CVioFile, IsNotInheritedByProgramsThatAreStarted) {
    TempDir dir;
    CVioFile file(dir.Write("file", "x"));
    const int next = dup(STDERR_FILENO);  // the descriptor that Open is going to get
    close(next);
    file.Open("r+");
    EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}
