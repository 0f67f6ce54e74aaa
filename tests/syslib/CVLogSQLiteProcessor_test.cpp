#include "syslib/CVLogSQLiteProcessor.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "syslib/LogStatements.h"
#include "tests/support/RunTogether.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

constexpr std::int64_t kTime = 1706778303;

class LogDatabase : public testing::Test {
protected:
    TempDir dir_;
    const std::string path_ = dir_ / "logs.sdb";

    /// Runs the statement on a connection of its own; the cells of the result, "|" between them.
    std::string Sql(const std::string& sql) const {
        CVSQLite3ResultSet result;
        CVSQLite3Database(path_).ExecuteSelectQuery(sql, result);
        return Cells(result);
    }
    static std::string Cells(const CVDBiResultSet& result) {
        std::string cells;
        for (int row = 0; row < result.GetRowCount(); ++row) {
            for (int column = 0; column < result.GetColumnCount(); ++column) {
                const char* cell = result.GetCell(row, column);
                cells += (cells.empty() ? "" : "|") + std::string(cell != nullptr ? cell : "NULL");
            }
        }
        return cells;
    }
    template <class Action>
    static std::string Failure(Action action) {
        try {
            action();
        } catch (const CVDBProcessorFatalException& thrown) {
            return thrown.what();
        }
        return "nothing thrown";
    }
};

}  // namespace

TEST_F(LogDatabase, MakesATableForEachModuleOnce) {
    CVLogSQLiteProcessor logs(path_, true);
    EXPECT_EQ(Sql("PRAGMA journal_mode;"), "wal");
    EXPECT_EQ(Sql("SELECT sql FROM sqlite_master WHERE name='metatable';") + ";",
              "CREATE TABLE metatable (id INTEGER, module_name VARCHAR(50), table_name VARCHAR(50));");
    EXPECT_TRUE(logs.Insert("SOAP", {"Send", kTime, 3, "it's 100%", 12, "CVsoap"}));
    EXPECT_TRUE(logs.InsertAsText("SOAP", {"", 9, 0, "second", -1, ""}));
    EXPECT_TRUE(logs.Insert("soap", {"", 9, 0, "other case, other module", -1, ""}));
    EXPECT_FALSE(logs.Insert("", {"x", 9, 0, "no module", -1, ""}));
    EXPECT_EQ(Sql("SELECT * FROM metatable;"), "NULL|SOAP|log_soap|NULL|soap|log_soap_2");
    EXPECT_EQ(Sql("SELECT * FROM log_soap;"),
              "1|Send|" + std::to_string(kTime) + "|3|it's 100%|12|CVsoap|2||9|0|second|-1|");
    EXPECT_EQ(Sql("SELECT message FROM log_soap_2;"), "other case, other module");
    EXPECT_EQ(logs.Modules(), (std::vector<std::string>{"SOAP", "soap"}));
}

TEST_F(LogDatabase, TakesNamesAndTextsForNothingButText) {
    CVLogSQLiteProcessor logs(path_, true);
    const std::string evil = "x'; DROP TABLE metatable; --";
    EXPECT_TRUE(logs.Insert(evil, {evil, kTime, 3, evil, -1, evil}));
    EXPECT_EQ(Cells(*logs.Query(evil, {.modules = {evil}, .messagePattern = evil, .withTime = false})),
              "1|" + evil + "|" + std::to_string(kTime) + "|3|" + evil + "|-1|" + evil);
    EXPECT_EQ(logs.CountQuery(evil, {.messagePattern = evil})->GetRowCount(), 1);
    for (const LogRecord& record :
         {LogRecord{"", 1, 1, evil, -1, ""}, {evil, 1, 1, "", -1, ""}, {"", 1, 1, "", -1, evil}}) {
        EXPECT_EQ(Failure([&] { logs.InsertAsText(evil, record); }),
                  "A text with a quote cannot be inserted as text.");
    }
    EXPECT_TRUE(logs.Drop(evil));
    EXPECT_TRUE(logs.Insert("caf\xC3\xA9", {}));
    EXPECT_EQ(Sql("SELECT table_name FROM metatable;"), "log_caf__");
}

TEST_F(LogDatabase, IgnoresRowsOfMetatableThatCouldBendAStatement) {
    CVLogSQLiteProcessor(path_, true).Insert("SOAP", {"", kTime, 3, "kept", -1, ""});
    CVSQLite3Database(path_).ExecuteUpdateQuery(
        "INSERT INTO metatable VALUES (1,'evil','t; DROP TABLE log_soap'),(2,NULL,'u'),(3,'none',NULL),"
        "(4,'dot','main.log_soap'),(5,'digit','2x'),(6,'empty','');");
    CVLogSQLiteProcessor logs(path_, true);
    EXPECT_EQ(logs.Modules(), std::vector<std::string>{"SOAP"});
    EXPECT_EQ(Failure([&] { logs.Query("evil", {}); }), "Module [evil] has no table.");
    EXPECT_TRUE(logs.Insert("evil", {"", kTime, 3, "fine", -1, ""}));
    EXPECT_EQ(logs.Query("SOAP", {})->GetRowCount(), 1);
}

TEST_F(LogDatabase, AnswersEveryCombinationOfFilters) {
    setenv("TZ", "UTC", 1);
    CVLogSQLiteProcessor logs(path_, true);
    logs.Insert("SOAP", {"Send", kTime, 3, "wanted", -1, ""});
    logs.Insert("SOAP", {"Other", 5, 7, "not this", -1, ""});
    const auto has = [](unsigned set, int bit) { return (set >> bit & 1U) != 0; };
    for (unsigned set = 0; set < 1U << 10; ++set) {
        LogFilter filter;
        if (has(set, 0)) filter.modules = {"Send", "x"};
        if (has(set, 1)) filter.levels = {3, 4};
        if (has(set, 2)) filter.messagePattern = "WANT%";
        if (has(set, 3)) filter.level = 3;
        if (has(set, 4)) filter.since = kTime;
        if (has(set, 5)) filter.timePattern = "02/01/2024 09:05:0_";
        filter.newestFirst = has(set, 6);
        filter.byModule = has(set, 7);
        filter.byLevel = has(set, 8);
        filter.withTime = has(set, 9);
        const int expected = (set & 0x3FU) == 0 ? 2 : 1;
        EXPECT_EQ(logs.Query("SOAP", filter)->GetRowCount(), expected) << SelectLogEntries("t", filter);
    }
}

TEST_F(LogDatabase, OrdersPagesAndCounts) {
    setenv("TZ", "UTC", 1);
    CVLogSQLiteProcessor logs(path_, true);
    for (int i = 0; i < 3; ++i) logs.Insert("SOAP", {"Send", kTime, 3, "same", -1, ""});
    logs.Insert("SOAP", {"Send", kTime + 1, 5, "last", -1, ""});
    const auto page = logs.Query("SOAP", {.newestFirst = true, .pageSize = 2, .offset = 0});
    EXPECT_EQ(page->GetRowCount(), 2);
    EXPECT_STREQ(page->GetCell(0, 4), "last");
    EXPECT_STREQ(page->GetColumnName(7), "tempcol");
    EXPECT_STREQ(page->GetCell(0, 7), "02/01/2024 09:05:04");
    EXPECT_STREQ(logs.Query("SOAP", {.offset = 3})->GetCell(0, 4), "last");
    EXPECT_EQ(Cells(*logs.CountQuery("SOAP", {})),
              "02/01/2024 09:05:03|same|3|4|5|3|7|02/01/2024 09:05:04|last|5|4|5|1|7");
    for (const LogCountFilter& filter : {LogCountFilter{3, "02/%", "s%"}, {3, "", "s%"}, {0, "%:03", "%"}}) {
        EXPECT_EQ(logs.CountQuery("SOAP", filter)->GetRowCount(), 1);
    }
}

TEST_F(LogDatabase, EmptiesAllTablesAndDropsOne) {
    CVLogSQLiteProcessor logs(path_, true);
    logs.Insert("SOAP", {"", kTime, 3, "a", -1, ""});
    logs.Insert("CLI", {"", kTime, 3, "b", -1, ""});
    CVSQLite3Database(path_).ExecuteUpdateQuery("DROP TABLE log_soap;");
    EXPECT_TRUE(logs.Truncate()) << "the missing table does not matter";
    EXPECT_EQ(logs.Query("CLI", {})->GetRowCount(), 0);
    EXPECT_TRUE(logs.Drop("SOAP") && logs.Drop("CLI"));
    EXPECT_EQ(Failure([&] { logs.Drop("CLI"); }), "Module [CLI] has no table.");
    EXPECT_TRUE(logs.Modules().empty());
}

TEST_F(LogDatabase, FollowsTablesThatOthersDropAndCreate) {
    CVLogSQLiteProcessor first(path_, true);
    CVLogSQLiteProcessor second(path_, true);
    first.Insert("SOAP", {"", kTime, 3, "first", -1, ""});
    second.Insert("SOAP", {"", kTime, 3, "its map is old", -1, ""});
    EXPECT_EQ(second.Query("SOAP", {})->GetRowCount(), 2);
    ASSERT_TRUE(first.Drop("SOAP"));
    EXPECT_TRUE(second.Insert("SOAP", {"", kTime, 3, "into a new table", -1, ""}));
    EXPECT_TRUE(second.InsertAsText("SOAP", {"", kTime, 3, "and again", -1, ""}));
    EXPECT_EQ(first.Query("SOAP", {})->GetRowCount(), 2);
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM metatable;"), "1");
    second.Insert("CLI", {"", kTime, 3, "a module that is new", -1, ""});
    EXPECT_EQ(first.Modules(), (std::vector<std::string>{"CLI", "SOAP"}));
}

TEST_F(LogDatabase, LosesNothingWhenManyProcessesMeetAModuleFirst) {
    RunTogether(32, [&](int number) {
        CVLogSQLiteProcessor logs(path_, true);
        for (int i = 0; i < 3; ++i) logs.Insert("SOAP", {"", kTime, 3, std::to_string(number), -1, ""});
    });
    EXPECT_EQ(Sql("SELECT module_name, table_name FROM metatable;"), "SOAP|log_soap");
    EXPECT_EQ(Sql("SELECT COUNT(*), COUNT(DISTINCT message) FROM log_soap;"), "96|32");
    EXPECT_EQ(Sql("SELECT COUNT(*) FROM sqlite_master WHERE name LIKE 'log_%';"), "1");
}

TEST_F(LogDatabase, IsOnlyOpenedForReadingWithoutACreateFlag) {
    EXPECT_EQ(Failure([&] { CVLogSQLiteProcessor(path_, false); }),
              "Unable to open log database [" + path_ + "]. No such file or directory");
    EXPECT_TRUE(dir_.Names().empty());
    dir_.Write("logs.sdb", "");
    CVLogSQLiteProcessor logs(path_, false);
    EXPECT_TRUE(logs.Modules().empty());
    EXPECT_EQ(ReadFile(path_), "");
    EXPECT_EQ(Failure([&] { logs.Insert("SOAP", {}); }),
              "Unable to create module [SOAP] table [log_soap]. no such table: metatable");
}
