#include "cvdblib/sqlite3/src/DatabaseFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/TempDir.h"

using namespace quorbel;

TEST(DatabaseFile, TellsWhatSqliteCouldUse) {
    TempDir dir;
    dir.Write("there.sdb", "");
    ASSERT_EQ(mkdir((dir / "folder").c_str(), 0755), 0);
    ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0644), 0);
    const struct {
        std::string path;
        bool readable, writable;
    } cases[] = {
        {dir / "there.sdb", true, true},
        {dir / "absent.sdb", false, true},
        {dir / "folder", false, false},
        {dir / "fifo", false, false},  // an open would wait for its other end
        {dir / "nowhere/x.sdb", false, false},
        {dir / "there.sdb/x.sdb", false, false},
        {"", false, false},
        {":memory:", false, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(IsReadableDatabase(c.path), c.readable) << c.path;
        EXPECT_EQ(IsWritableDatabase(c.path), c.writable) << c.path;
    }
}
