#include "syslib/CVIniReaderWriterEx.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

TEST(CVIniReaderWriterEx, RewritesTheFileItHoldsOpen) {
    TempDir dir;
    CVIniReaderWriterEx ini(dir.Write("x.ini", "[a]\nlong=entry\nx=1\n"), true);
    ASSERT_TRUE(ini.Open());
    EXPECT_FALSE(ini.Open()) << "it is open already";
    ASSERT_TRUE(ini.load());
    ini.FindKey(ini.FindSection("[a]"), "long")->clear();
    EXPECT_TRUE(ini.save());
    EXPECT_EQ(ReadFile(dir / "x.ini"), "\n[a]\nlong=\nx=1\n");

    dir.Write("x.ini", "[b]\ny=2\n");
    ASSERT_TRUE(ini.load());
    EXPECT_EQ(ini.Sections().size(), 1U);
    EXPECT_EQ(ini.key(ini.section("[b]"), "y"), "2") << "served what it had read before";
    EXPECT_TRUE(ini.save(dir / "copy.ini"));
    EXPECT_EQ(ReadFile(dir / "x.ini"), "[b]\ny=2\n");
    EXPECT_EQ(ReadFile(dir / "copy.ini"), "\n[b]\ny=2\n");
}

TEST(CVIniReaderWriterEx, CreatesOrEmptiesTheFile) {
    TempDir dir;
    CVIniReaderWriterEx ini(dir.Write("x.ini", "[a]\n"));
    ASSERT_TRUE(ini.Create());
    EXPECT_TRUE(ini.load());
    EXPECT_TRUE(ini.Sections().empty());
    ini.section("[new]");
    EXPECT_TRUE(ini.save());
    EXPECT_TRUE(ini.save()) << "the second one must not add to the first";
    EXPECT_EQ(ReadFile(dir / "x.ini"), "\n[new]\n");
}

TEST(CVIniReaderWriterEx, AnswersFalseWhileClosed) {
    TempDir dir;
    CVIniReaderWriterEx ini(dir / "missing.ini", true);
    EXPECT_FALSE(ini.Open());
    EXPECT_EQ(ini.LastError(), ENOENT);
    EXPECT_FALSE(ini.load());
    EXPECT_FALSE(ini.save());
    ASSERT_TRUE(ini.Create());
    EXPECT_TRUE(ini.save());
    ini.Close();
    EXPECT_FALSE(ini.save());
}

// rand() milliseconds apart can be months.
TEST(CVIniReaderWriterEx, TriesAgainOnlyWhereAnotherProgramHoldsTheLock) {
    TempDir dir;
    CVIniReaderWriterEx ini(dir.Write("x.ini", "[a]\n"), /*lock=*/true, /*retry=*/true);
    int sleeps = 0;
    ini.SetSleep([&](auto) { ++sleeps; });
    EXPECT_FALSE(ini.load()) << "it is closed";
    EXPECT_FALSE(ini.save());
    EXPECT_EQ(sleeps, 0);
    ASSERT_TRUE(ini.Open());
    const pid_t parent = getpid();
    EXPECT_TRUE(ini.load());
    const auto tryWhileHeld = [&] {
        if (getpid() != parent && (ini.load() || sleeps != 9)) throw 0;
    };
    CVIniReaderWriterEx holder(dir / "x.ini");
    ASSERT_TRUE(holder.Open() && holder.LockUntilClose());
    EXPECT_EQ(InChildProcess(tryWhileHeld), Child::Finished);
}

TEST(CVIniReaderWriterEx, KeepsTheOldContentOnAFullDisk) {
    TempDir dir;
    const std::string before = "[a]\nx=1\n" + std::string(1, '#') + std::string(300, 'c') + "\n";
    dir.Write("x.ini", before);
    const auto save = [&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{400, 400};
        CVIniReaderWriterEx ini(dir / "x.ini");
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0 || !ini.Open() || !ini.load()) throw 0;
        ini.key(ini.section("[a]"), "y") = std::string(300, 'y');
        if (ini.save()) throw 0;
    };
    EXPECT_EQ(InChildProcess(save), Child::Finished);
    EXPECT_EQ(ReadFile(dir / "x.ini"), before);
}

TEST(CVIniReaderWriterEx, HoldsNoLockBetweenCalls) {
    TempDir dir;
    CVIniReaderWriterEx ini(dir.Write("x.ini", "[a]\n"), true);
    ASSERT_TRUE(ini.Open());
    EXPECT_TRUE(ini.load());
    EXPECT_TRUE(ini.save());
    const auto load = [&] {
        if (!IniReaderWriter(dir / "x.ini", true).load()) throw 1;
    };
    EXPECT_EQ(InChildProcess(load), Child::Finished);
}
