#include "syslib/CVIniReaderWriterEx.h"

#include <gtest/gtest.h>

#include <cerrno>

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
