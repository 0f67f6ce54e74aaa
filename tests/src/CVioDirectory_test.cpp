#include "CVioDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "CVException.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

using testing::UnorderedElementsAre;

TEST(CVioDirectory, ListsAllNamesOrAllButTheLock) {
    TempDir dir;
    dir.Write("lock", "");
    dir.Write("a", "");
    dir.Write("sub/x", "");
    ASSERT_EQ(symlink("nowhere", (dir / "dangling").c_str()), 0);
    const CVioDirectory directory(dir.Path());
    EXPECT_THAT(directory.List(), UnorderedElementsAre("lock", "a", "sub", "dangling"));
    EXPECT_THAT(directory.ListWithoutLock(), UnorderedElementsAre("a", "sub", "dangling"));
}

TEST(CVioDirectory, NamesADirectoryThatCannotBeRead) {
    TempDir dir;
    try {
        CVioDirectory(dir / "missing").List();
        FAIL() << "listed what is not there";
    } catch (const CVioException& failure) {
        EXPECT_EQ(failure.GetMessage(), "Read Directory Failed");
        EXPECT_EQ(failure.GetIoPath(), dir / "missing");
    }
}
