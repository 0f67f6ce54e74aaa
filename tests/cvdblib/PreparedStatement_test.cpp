#include "cvdblib/sqlite3/src/PreparedStatement.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <memory>

#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

class Prepared : public testing::Test {
protected:
    TempDir dir_;
    int pauses_ = 0;
    CVSQLite3Database database_{dir_ / "x.sdb",
                                {"t", "word TEXT UNIQUE, small INT, large INT"},
                                [this](std::chrono::milliseconds) { ++pauses_; }};
    static constexpr const char* kInsert = "INSERT INTO t (word, small, large) VALUES (?, ?, ?);";
};

}  // namespace

TEST_F(Prepared, StoresValuesWhateverTheirText) {
    const std::string word = "it's 100%; DROP TABLE t; --";
    PreparedStatement insert(database_, kInsert);
    insert.BindText(1, word).BindInt(2, -7).BindInt64(3, std::numeric_limits<std::int64_t>::min()).Run();
    CVSQLite3ResultSet result;
    ASSERT_TRUE(database_.ExecuteSelectQuery("SELECT * FROM t;", result));
    EXPECT_EQ(result.GetCell(0, 0), word);
    EXPECT_STREQ(result.GetCell(0, 1), "-7");
    EXPECT_STREQ(result.GetCell(0, 2), "-9223372036854775808");
}

TEST_F(Prepared, ReportsEachStepAndNeverHoldsTheDatabaseOpen) {
    const auto textOf = [](auto action) -> std::string {
        try {
            action();
        } catch (const CVDBexception& thrown) {
            return thrown.GetSystemMessage();
        }
        return "nothing thrown";
    };
    const auto insert = [&] { PreparedStatement(database_, kInsert).BindText(1, "a").Run(); };
    insert();
    EXPECT_EQ(textOf([&] { PreparedStatement(database_, "INSERT INTO u VALUES (?);"); }), "no such table: u");
    EXPECT_EQ(textOf([&] { PreparedStatement(database_, kInsert).BindInt(4, 0); }),
              "column index out of range");
    EXPECT_EQ(textOf(insert), "UNIQUE constraint failed: t.word");
    EXPECT_EQ(database_.GetLastErrorCode(), 2067);
    EXPECT_TRUE(database_.Close());
    EXPECT_EQ(pauses_, 0);
    EXPECT_EQ(textOf(insert), "database is not open");
}

TEST_F(Prepared, IsOfNoUseInAChildAndHarmsNothingThere) {
    auto insert = std::make_unique<PreparedStatement>(database_, kInsert);
    insert->BindText(1, "a").Run();
    EXPECT_EQ(InChildProcess([&] {
                  try {
                      insert->Run();
                  } catch (const CVDBexception& thrown) {
                      if (thrown.GetSystemMessage() != "statement of another process") throw 1;
                      insert.reset();
                      PreparedStatement(database_, kInsert).BindText(1, "b").Run();
                      return;
                  }
                  throw 2;
              }),
              Child::Finished);
    insert->BindText(1, "c").Run();
    CVSQLite3ResultSet result;
    ASSERT_TRUE(database_.ExecuteSelectQuery("SELECT * FROM t;", result));
    EXPECT_EQ(result.GetRowCount(), 3);
}
