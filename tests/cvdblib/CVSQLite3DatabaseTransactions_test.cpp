#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>

#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

using std::chrono::milliseconds;

/// Two connections to one file; the second does not wait inside SQLite until it is reopened.
class Transactions : public testing::Test {
protected:
    TempDir dir_;
    CVSQLite3Database first_{dir_ / "x.sdb", {"t", "a INTEGER PRIMARY KEY"}};
    int pauses_ = 0;
    std::function<void()> duringPause_ = [] {};
    CVSQLite3Database second_{dir_ / "x.sdb", [this](milliseconds time) {
                                  EXPECT_EQ(time, milliseconds(30));
                                  ++pauses_;
                                  duringPause_();
                              }};

    void SetUp() override { second_.ExecuteUpdateQuery("PRAGMA busy_timeout=0;"); }

    static int Rows(CVSQLite3Database& database) {
        CVSQLite3ResultSet result;
        database.ExecuteSelectQuery("SELECT a FROM t;", result);
        return result.GetRowCount();
    }
};

constexpr TransactionRetry kThreeTimes{true, 3, milliseconds(30)};

}  // namespace

TEST_F(Transactions, KeepOnCommitAndForgetOnRollback) {
    EXPECT_FALSE(first_.CommitTransaction("", kTryOnce) || first_.RollbackTransaction("", kTryOnce));
    ASSERT_TRUE(first_.BeginImmediateTransaction("named", kTryOnce));
    EXPECT_FALSE(first_.IsAutoCommit());
    EXPECT_FALSE(first_.BeginImmediateTransaction("", kTryOnce) || first_.SimpleBegin()) << "a second one";
    ASSERT_TRUE(first_.ExecuteUpdateQuery("INSERT INTO t VALUES (1);"));
    EXPECT_EQ(Rows(second_), 0);
    ASSERT_TRUE(first_.CommitTransaction("named", kTryOnce));
    EXPECT_EQ(Rows(second_), 1);

    ASSERT_TRUE(first_.BeginExclusiveTransaction("", kTryOnce));
    ASSERT_TRUE(first_.ExecuteUpdateQuery("DELETE FROM t;"));
    ASSERT_TRUE(first_.RollbackTransaction("", kTryOnce));
    EXPECT_EQ(Rows(second_), 1);
    ASSERT_TRUE(first_.SimpleBegin() && first_.SimpleCommit());
}

TEST_F(Transactions, AreRetriedWhileBusyAndThenGivenUp) {
    ASSERT_TRUE(first_.BeginExclusiveTransaction("", kTryOnce));
    EXPECT_FALSE(second_.BeginImmediateTransaction("", kThreeTimes));
    EXPECT_EQ(pauses_, 3);
    EXPECT_EQ(second_.GetLastErrorCode(), 5) << "told although the database was reopened";
    EXPECT_EQ(second_.GetLastErrorMessage(), "database is locked");

    second_.ExecuteUpdateQuery("PRAGMA busy_timeout=0;");
    EXPECT_FALSE(second_.BeginExclusiveTransaction("", kTryOnce));
    EXPECT_EQ(pauses_, 3) << "retry is off";

    second_.ExecuteUpdateQuery("PRAGMA busy_timeout=0;");
    duringPause_ = [this] { first_.RollbackTransaction("", kTryOnce); };
    EXPECT_TRUE(second_.BeginImmediateTransaction("", kThreeTimes));
    EXPECT_EQ(pauses_, 4);
}

TEST_F(Transactions, KeepTheWaitAndTheSynchronousModeWhenTheDatabaseIsReopened) {
    ASSERT_TRUE(first_.BeginImmediateTransaction("", kTryOnce));
    int asked = 0;
    second_.SetBusyWait([&](int) { return ++asked % 3 != 0; });
    ASSERT_TRUE(second_.SetSynchronous(1));
    for (const int calls : {3, 6}) {
        EXPECT_FALSE(second_.BeginImmediateTransaction("", kTryOnce));
        EXPECT_EQ(asked, calls);
    }
    EXPECT_EQ(second_.GetLastErrorCode(), 5);
    CVSQLite3ResultSet level;
    ASSERT_TRUE(second_.ExecuteSelectQuery("PRAGMA synchronous;", level));
    EXPECT_STREQ(level.GetCell(0, 0), "1");
}

TEST_F(Transactions, ReopenAReadOnlyDatabaseAndBeginAgain) {
    second_.ExecuteUpdateQuery("PRAGMA query_only=1;");  // answers as a file that was replaced does
    EXPECT_TRUE(second_.BeginImmediateTransaction("", kThreeTimes));
    EXPECT_EQ(pauses_, 1);
    EXPECT_TRUE(second_.RollbackTransaction("", kTryOnce));
    second_.ExecuteUpdateQuery("PRAGMA query_only=1;");
    EXPECT_FALSE(second_.BeginImmediateTransaction("", kTryOnce));
    EXPECT_EQ(second_.GetLastErrorCode(), 8);
}

TEST_F(Transactions, ThrowAndReopenOnAnyOtherError) {
    ASSERT_TRUE(first_.BeginImmediateTransaction("", kTryOnce));
    EXPECT_THROW(first_.CommitTransaction("not a name", kThreeTimes), CVDBexception);
    EXPECT_TRUE(first_.IsReady() && first_.IsAutoCommit()) << "reopened, the transaction is gone";
    EXPECT_FALSE(first_.RollbackTransaction("", kTryOnce));
}

TEST_F(Transactions, UndoAFailedUpdateWhole) {
    CVSQLite3ResultSet result;
    std::int64_t rowId = 0;
    EXPECT_THROW(first_.ExecuteUpdateInTransaction("INSERT INTO t VALUES (1); INSERT INTO t VALUES (1);",
                                                   result, rowId),
                 CVDBexception);
    EXPECT_EQ(first_.GetLastErrorCode(), 1555) << "the failure's own, not the rollback's";
    EXPECT_TRUE(first_.IsAutoCommit());
    EXPECT_EQ(Rows(second_), 0);
    EXPECT_TRUE(first_.ExecuteUpdateInTransaction("INSERT INTO t VALUES (4);", result, rowId));
    EXPECT_EQ(rowId, 4);
    EXPECT_TRUE(first_.ExecuteSelectInTransaction("SELECT a FROM t;", result));
    EXPECT_EQ(result.GetRowCount(), 1);
}

TEST_F(Transactions, RollBackWhatTheBodyRefusesOrThrows) {
    const auto insert = [this] { return first_.ExecuteUpdateQuery("INSERT INTO t VALUES (1);"); };
    EXPECT_FALSE(first_.InTransaction(TransactionKind::Immediate, kTryOnce, [&] { return !insert(); }));
    EXPECT_THROW(first_.InTransaction(TransactionKind::Exclusive, kTryOnce,
                                      [&]() -> bool {
                                          insert();
                                          throw std::logic_error("x");
                                      }),
                 std::logic_error);
    EXPECT_EQ(Rows(second_), 0);
    EXPECT_TRUE(first_.InTransaction(TransactionKind::Exclusive, kTryOnce, insert));
}
