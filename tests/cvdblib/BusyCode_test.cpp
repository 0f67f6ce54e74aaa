#include "cvdblib/sqlite3/src/BusyCode.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace quorbel;

TEST(BusyCode, CountsByTheMasksAndNotByTheLibrarysMeaning) {
    const struct {
        int code;
        bool busy;
    } cases[] = {
        {SQLITE_OK, false},
        {SQLITE_ERROR, false},
        {SQLITE_PERM, false},
        {SQLITE_ABORT, false},
        {SQLITE_BUSY, true},
        {SQLITE_LOCKED, true},
        {SQLITE_NOMEM, true},
        {SQLITE_READONLY, false},
        {SQLITE_INTERRUPT, false},
        {SQLITE_IOERR, true},
        {SQLITE_CORRUPT, true},
        {SQLITE_NOTFOUND, false},
        {SQLITE_FULL, true},
        {SQLITE_CANTOPEN, true},
        {SQLITE_PROTOCOL, true},
        {SQLITE_EMPTY, false},
        {SQLITE_SCHEMA, false},
        {SQLITE_CONSTRAINT, false},
        {SQLITE_MISUSE, true},
        {SQLITE_NOLFS, true},
        {SQLITE_AUTH, true},
        {SQLITE_NOTADB, true},
        {SQLITE_NOTICE, true},
        {SQLITE_BUSY_SNAPSHOT, true},
        {SQLITE_IOERR_READ, true},
        {SQLITE_CANTOPEN_ISDIR, true},
        {SQLITE_CONSTRAINT_UNIQUE, false},
        {SQLITE_CONSTRAINT_PRIMARYKEY, false},
        {SQLITE_READONLY_DBMOVED, false},
    };
    for (const auto& c : cases) EXPECT_EQ(CountsAsBusy(c.code), c.busy) << c.code;
}
