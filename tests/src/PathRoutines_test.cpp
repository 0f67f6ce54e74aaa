#include "PathRoutines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/TempDir.h"

using namespace quorbel;

namespace fs = std::filesystem;

namespace {

mode_t ModeOf(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

}  // namespace

TEST(PathRoutines, ChangeWhatIsThereAndTellWhatIsNot) {
    TempDir dir;
    const std::string path = dir.Write("a", "text");
    EXPECT_TRUE(ChangeMode(path, 0640));
    EXPECT_EQ(ModeOf(path), 0640U);
    EXPECT_TRUE(RenameFile(path, dir / "b"));
    EXPECT_FALSE(RenameFile(path, dir / "c"));
    EXPECT_TRUE(DeleteFile(dir / "b"));
    EXPECT_FALSE(DeleteFile(dir / "b"));
    EXPECT_FALSE(ChangeMode(dir / "b", 0600));
    EXPECT_TRUE(IsDirectory(dir.Path()));
    EXPECT_FALSE(IsDirectory(dir / "b"));
    EXPECT_THAT(dir.Names(), testing::IsEmpty());
}

TEST(PathRoutines, CopyBytesAndMode) {
    TempDir dir;
    std::string content(200000, 'x');
    content[70000] = '\0';
    const std::string from = dir.Write("from", content);
    ChangeMode(from, 0751);
    EXPECT_TRUE(CopyFile(from, dir / "to"));
    EXPECT_EQ(ReadFile(dir / "to"), content);
    EXPECT_EQ(ModeOf(dir / "to"), 0751U);
    EXPECT_FALSE(CopyFile(from, dir.Path() + "/./from"));
    EXPECT_EQ(ReadFile(from), content) << "copied onto itself";
    EXPECT_FALSE(CopyFile(dir / "missing", dir / "to"));
    EXPECT_FALSE(CopyFile(from, dir / "no/such"));
}

TEST(CreateLockFile, UsesTheFileLockOfTheDirectory) {
    TempDir dir;
    const mode_t mask = umask(077);
    const auto create = [](const char* directory) {
        const int descriptor = CreateLockFile(directory);
        if (descriptor >= 0) close(descriptor);
        return descriptor >= 0;
    };
    const fs::path before = fs::current_path();
    fs::current_path(dir.Path());
    for (const std::string& directory : {dir.Path(), dir / "", std::string()}) {
        EXPECT_TRUE(create(directory.c_str()));
        EXPECT_THAT(dir.Names(), testing::ElementsAre("lock")) << directory;
        EXPECT_EQ(ReadFile(dir / "lock"), "locker");
        EXPECT_EQ(ModeOf(dir / "lock"), 0666U);
        DeleteFile(dir / "lock");
    }
    dir.Write("lock", "kept");
    EXPECT_TRUE(create(nullptr));
    EXPECT_EQ(ReadFile(dir / "lock"), "kept");
    fs::current_path(before);
    umask(mask);
    EXPECT_FALSE(create((dir / "missing").c_str()));
}
