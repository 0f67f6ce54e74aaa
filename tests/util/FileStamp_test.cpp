#include "util/FileStamp.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/TempDir.h"

using namespace quorbel;

TEST(FileStamp, TellsEveryChangeOfAFileApart) {
    const TempDir dir;
    const std::string path = dir.Write("file", "one");
    const FileStamp first(path);
    EXPECT_TRUE(FileStamp(path) == first);
    EXPECT_FALSE(first.IsReliable()) << "written just now";
    EXPECT_TRUE(FileStamp(dir / "missing").IsReliable());
    EXPECT_FALSE(FileStamp(dir / "missing") == first);
    EXPECT_FALSE(FileStamp().IsReliable());

    dir.Write("other", "two");
    std::filesystem::rename(dir / "other", path);
    const FileStamp replaced(path);
    EXPECT_FALSE(replaced == first) << "another file of the same size";
    const timespec longAgo[2] = {{1, 0}, {1, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), longAgo, 0), 0);
    EXPECT_FALSE(FileStamp(path) == replaced);
    const FileStamp dated(path);
    dir.Write("file", "three");
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), longAgo, 0), 0);
    EXPECT_FALSE(FileStamp(path) == dated) << "with its old time set again";
}
