#include "syslib/LogStatements.h"

#include <gtest/gtest.h>

#include "syslib/CVDBProcessorFatalException.h"

using namespace quorbel;

namespace {

const std::string kEntries =
    "SELECT *,strftime('%m/%d/%Y %H:%M:%S',timestamp,'unixepoch','localtime') AS tempcol FROM t ";
const std::string kCounts =
    "SELECT  strftime('%m/%d/%Y %H:%M:%S',timestamp,'unixepoch','localtime') entry_time, message, "
    "level,'4','5',COUNT(*) as records,'7' FROM t";

}  // namespace

TEST(LogStatements, AreWordedAsOtherProgramsKnowThem) {
    EXPECT_EQ(CreateLogTable("t"),
              "CREATE TABLE t (id INTEGER PRIMARY KEY AUTOINCREMENT, module VARCHAR(50), timestamp INTEGER, "
              "level SMALLINT, message VARCHAR(100), line INTEGER, srcfile VARCHAR(50));");
    EXPECT_EQ(DropLogTable("t"), "DROP TABLE t;");
    EXPECT_EQ(EmptyLogTable("t"), "DELETE FROM t;");
    EXPECT_EQ(RecordLogModule("it's", "log_it_s"),
              "INSERT INTO metatable (module_name, table_name) VALUES ('it''s', 'log_it_s');");
    EXPECT_EQ(InsertLogRecord("t"),
              "INSERT INTO t (module, timestamp, level, message, line, srcfile) VALUES (?, ?, ?, ?, ?, ?);");
}

TEST(LogStatements, PasteAValueOnlyWithoutQuotes) {
    EXPECT_EQ(
        InsertLogRecordAsText("t", {"Send", 5000000000, 3, "100%d", -1, "CVsoap"}),
        "INSERT INTO t (module, timestamp, level, message, line, srcfile) VALUES ('Send', 5000000000, 3, "
        "'100%d', -1, 'CVsoap');");
    for (const LogRecord& record : {LogRecord{"a'b", 1, 1, "", 1, ""}, LogRecord{"", 1, 1, "'", 1, ""},
                                    LogRecord{"", 1, 1, "", 1, "'"}}) {
        EXPECT_THROW(InsertLogRecordAsText("t", record), CVDBProcessorFatalException);
    }
}

TEST(LogStatements, SelectEntriesByWhatIsGiven) {
    const struct {
        LogFilter filter;
        std::string clause;
    } cases[] = {
        {{}, " LIMIT -1 OFFSET 0 ;"},
        {{.pageSize = 20, .offset = 40}, " LIMIT 20 OFFSET 40 ;"},
        {{.pageSize = -7, .offset = -1}, " LIMIT -1 OFFSET 0 ;"},
        {{.modules = {"Send", "it's"}}, "WHERE module IN ('Send', 'it''s')  LIMIT -1 OFFSET 0 ;"},
        {{.levels = {4, 5}}, "WHERE level IN (4, 5)  LIMIT -1 OFFSET 0 ;"},
        {{.messagePattern = "%d'%%"}, "WHERE message LIKE '%d''%%'  LIMIT -1 OFFSET 0 ;"},
        {{.since = 5000000000}, "WHERE  timestamp>=5000000000  LIMIT -1 OFFSET 0 ;"},
        {{.level = 3, .since = 5, .timePattern = "02/%"},
         "WHERE level = 3  AND timestamp>=5 AND tempcol LIKE '02/%'  LIMIT -1 OFFSET 0 ;"},
        {{.modules = {"a"}, .levels = {1}, .messagePattern = "m", .level = 1},
         "WHERE module IN ('a') AND level IN (1) AND message LIKE 'm' AND level = 1  LIMIT -1 OFFSET 0 ;"},
        {{.newestFirst = true, .byLevel = true}, "ORDER BY timestamp DESC, level LIMIT -1 OFFSET 0 ;"},
        {{.level = 0, .byModule = true}, "WHERE level = 0 ORDER BY module LIMIT -1 OFFSET 0 ;"},
    };
    for (const auto& c : cases) EXPECT_EQ(SelectLogEntries("t", c.filter), kEntries + c.clause);
    EXPECT_EQ(SelectLogEntries("t", {.withTime = false}), "SELECT * FROM t  LIMIT -1 OFFSET 0 ;");
    EXPECT_EQ(SelectLogEntries("t", {.timePattern = "02/%", .withTime = false}),
              kEntries + "WHERE tempcol LIKE '02/%'  LIMIT -1 OFFSET 0 ;");
}

TEST(LogStatements, CountEntriesByWhatIsGiven) {
    const struct {
        LogCountFilter filter;
        std::string conditions;
    } cases[] = {
        {{}, ""},
        {{.level = 3, .timePattern = "02/%", .messagePattern = "it's"},
         " WHERE level=3 AND entry_time LIKE '02/%' AND message LIKE 'it''s'"},
        {{.timePattern = "02/%"}, " WHERE entry_time LIKE '02/%'"},
        {{.messagePattern = "%d"}, " WHERE message LIKE '%d'"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CountLogEntries("t", c.filter),
                  kCounts + c.conditions + " GROUP BY entry_time, message, level;");
    }
}

TEST(LogStatements, NameTablesSafely) {
    const struct {
        const char* module;
        const char* table;
    } cases[] = {
        {"SOAP", "log_soap"},
        {"Email Gateway", "log_email_gateway"},
        {"x'; DROP TABLE metatable; --", "log_x___drop_table_metatable____"},
        {"caf\xC3\xA9", "log_caf__"},
        {"metatable", "log_metatable"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(LogTableName(c.module), c.table);
        EXPECT_TRUE(IsLogTableName(c.table));
    }
    for (const char* text : {"", "2x", "a b", "a;b", "a'b", "main.t"})
        EXPECT_FALSE(IsLogTableName(text)) << text;
}
