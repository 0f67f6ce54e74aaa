#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdint>

#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

class Queries : public testing::Test {
protected:
    TempDir dir_;
    CVSQLite3Database database_{dir_ / "x.sdb", {"t", "id INTEGER PRIMARY KEY, word TEXT"}};
    CVSQLite3ResultSet result_;
    std::int64_t rowId_ = -1;

    std::string Text(const std::string& sql) {
        CVSQLite3ResultSet result;
        database_.ExecuteSelectQuery(sql, result);
        const char* text = result.GetCell(0, 0);
        return text != nullptr ? text : "(null)";
    }
};

}  // namespace

TEST_F(Queries, HandOutTheTableByRowAndColumn) {
    ASSERT_TRUE(database_.ExecuteSelectQuery("SELECT 1 AS a, NULL AS b UNION ALL SELECT 2, 'z';", result_));
    EXPECT_EQ(result_.GetRowCount(), 2);
    EXPECT_EQ(result_.GetColumnCount(), 2);
    EXPECT_STREQ(result_.GetColumnName(1), "b");
    EXPECT_STREQ(result_.GetCell(0, 0), "1");
    EXPECT_EQ(result_.GetCell(0, 1), nullptr);
    EXPECT_STREQ(result_.GetCell(1, 1), "z");
    for (const auto& [row, column] : {std::pair(2, 0), {0, 2}, {-1, 0}, {0, -1}}) {
        EXPECT_EQ(result_.GetCell(row, column), nullptr);
    }
    ASSERT_TRUE(database_.ExecuteSelectQuery("SELECT * FROM t;", result_)) << "the first table is freed";
    EXPECT_EQ(result_.GetColumnName(0), nullptr);
}

TEST_F(Queries, ReportWhatAnUpdateChanged) {
    ASSERT_TRUE(database_.ExecuteSelectQuery("SELECT 1;", result_));
    ASSERT_TRUE(database_.ExecuteUpdateQuery("INSERT INTO t VALUES (7,'a'),(9,'b');", result_, rowId_));
    EXPECT_EQ(result_.GetRowCount(), 0) << "rows of the select before";
    EXPECT_EQ(result_.GetAffectedRows(), 2);
    EXPECT_EQ(rowId_, 9);
    ASSERT_TRUE(database_.ExecuteUpdateQuery("INSERT INTO t VALUES (-5,'c');", result_, rowId_));
    EXPECT_EQ(rowId_, 0) << "negative";
    int returned = 0;
    int affected = 0;
    ASSERT_TRUE(database_.ExecuteUpdateQuery("UPDATE t SET word='d' RETURNING id;", returned, affected));
    EXPECT_EQ(returned, 3);
    EXPECT_EQ(affected, 3);
}

TEST_F(Queries, ThrowWithTheStatementAndTheLibrarysText) {
    const std::string sql = "SELECT FROM " + std::string(3000, 't') + ";";
    try {
        database_.ExecuteSelectQuery(sql, result_);
        FAIL() << "accepted";
    } catch (const CVDBexception& thrown) {
        EXPECT_EQ(thrown.ToString(), "Exception raised! Error code[1] File[CVSQLite3Database] Line[" +
                                         std::to_string(thrown.GetLine()) +
                                         "] Msg[Unable to execute SELECT query [" + sql +
                                         "].] SysMsg[near \"FROM\": syntax error]");
    }
    EXPECT_EQ(database_.GetLastErrorCode(), 1);
    EXPECT_TRUE(database_.IsReady());
    EXPECT_EQ(database_.GetLastErrorMessage(), "") << "every operation forgets the last error";
}

TEST_F(Queries, ChangeSchemaAndSynchronousModeWithoutThrowing) {
    EXPECT_TRUE(database_.SetSchema({"t", "other"}));
    EXPECT_EQ(Text("SELECT name FROM pragma_table_info('t');"), "other");
    EXPECT_FALSE(database_.SetSchema({"t", "a,,"}));
    EXPECT_FALSE(database_.TableExists("t")) << "dropped before the CREATE failed";
    EXPECT_FALSE(database_.TableExists("it's"));
    EXPECT_TRUE(database_.SetSynchronous(1));
    EXPECT_EQ(Text("PRAGMA synchronous;"), "1");
}

TEST_F(Queries, CallAFunctionOfOurs) {
    const auto twice = [](sqlite3_context* context, int, sqlite3_value** values) {
        sqlite3_result_int(context, 2 * sqlite3_value_int(values[0]));
    };
    EXPECT_FALSE(database_.CreateFunction("", twice, 1, SQLITE_UTF8));
    EXPECT_FALSE(database_.CreateFunction("twice", nullptr, 1, SQLITE_UTF8));
    EXPECT_TRUE(database_.CreateFunction("twice", twice, 1, SQLITE_UTF8));
    EXPECT_EQ(Text("SELECT twice(21);"), "42");
}

TEST_F(Queries, TreatQuotesOfOutsideText) {
    for (const std::string text : {"", "'", "it's", "''", "x'; DROP TABLE t; --"}) {
        EXPECT_EQ(Text("SELECT '" + CVSQLite3Database::DoubleQuotes(text) + "';"), text);
    }
    char buffer[] = "'a''b'";
    CVSQLite3Database::ReplaceQuotes(buffer);
    EXPECT_STREQ(buffer, "\"a\"\"b\"");
}
