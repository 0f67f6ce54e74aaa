#include "syslib/CVsysEventLogSQLiteWriter.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <ctime>

#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

class SQLiteWriter : public testing::Test {
protected:
    TempDir dir_;
    const std::string path_ = dir_ / "logs.sdb";
    CVsysEventLogSQLiteWriter writer_{"SOAP"};

    void SetUp() override { TakeSystemLog(); }

    /// The first row of the statement's result, "|" between its cells.
    std::string Row(const std::string& sql) const {
        CVSQLite3ResultSet result;
        CVSQLite3Database(path_).ExecuteSelectQuery(sql, result);
        std::string row;
        for (int column = 0; column < result.GetColumnCount(); ++column) {
            row += (column == 0 ? "" : "|") + std::string(result.GetCell(0, column));
        }
        return row;
    }
};

}  // namespace

TEST_F(SQLiteWriter, StoresAnEntryUnderModuleAndSubModule) {
    EXPECT_EQ(writer_.DoWork("SOAP", 3, "dropped", -1, nullptr, 5), 0) << "no database yet";
    ASSERT_TRUE(writer_.setProperty("DbFileName", path_));
    const struct {
        const char* module;
        unsigned level;
        int extra;
        const char* userText;
        const char* row;
    } cases[] = {
        {"SOAP", 7, -1, nullptr, "log_soap||5|7|it's|-1|"},
        {"SOAP.Send", 1, 12, "CVsoap", "log_soap|Send|5|1|it's|12|CVsoap"},
        {"SOAP.a.b", 9, -1, nullptr, "log_soap|a.b|5|0|it's|-1|"},
        {"CLI.", 0U - 1, -1, "", "log_cli||5|0|it's|-1|"},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(writer_.DoWork(c.module, c.level, "it's", c.extra, c.userText, 5), 1) << c.module;
        const std::string table = std::string(c.row).substr(0, std::string(c.row).find('|'));
        EXPECT_EQ(Row("SELECT '" + table + "',module,timestamp,level,message,line,srcfile FROM " + table +
                      " ORDER BY id DESC;"),
                  c.row);
    }
    EXPECT_EQ(writer_.DoWork(".Send", 3, "no module", -1, nullptr, 5), 0);
    EXPECT_TRUE(TakeSystemLog().empty());
}

TEST_F(SQLiteWriter, TakesTheCurrentTimeForNone) {
    ASSERT_TRUE(writer_.setProperty("filename", path_));
    const std::time_t before = std::time(nullptr);
    ASSERT_EQ(writer_("SOAP", 3, "now", -1, nullptr, 0), 1);
    EXPECT_GE(std::stoll(Row("SELECT timestamp FROM log_soap;")), before);
}

TEST_F(SQLiteWriter, EmptiesOnlyADatabaseThatIsOpen) {
    ASSERT_TRUE(writer_.setDbFileName(path_));
    ASSERT_EQ(writer_("SOAP", 3, "kept", -1, nullptr, 5), 1);
    CVsysEventLogSQLiteWriter next("SOAP");
    EXPECT_FALSE(next.setProperty("truncate", "1")) << "nothing is open yet";
    EXPECT_TRUE(next.setProperty("dbfilename", path_));
    EXPECT_FALSE(next.setProperty("truncate", "0"));
    EXPECT_EQ(Row("SELECT COUNT(*) FROM log_soap;"), "1");
    EXPECT_TRUE(next.setProperty("Truncate", "1"));
    EXPECT_EQ(Row("SELECT COUNT(*) FROM log_soap;"), "0");
    EXPECT_TRUE(next.setProperty("level", "info")) << "a key of others";
}

TEST_F(SQLiteWriter, RefusesAUselessPathAtOnceAndReportsIt) {
    const std::string garbage = dir_.Write("100%m.sdb", std::string(5000, 'x'));
    const std::string unusable =
        "It must be a file, in a directory that takes new files, that can be read and written.";
    const struct {
        std::string path, reason;
    } cases[] = {
        {"", unusable},
        {":memory:", unusable},
        {dir_ / "none/logs.sdb", unusable},
        {dir_.Path(), unusable},
        {garbage, "file is not a database"},
    };
    ASSERT_TRUE(writer_.setDbFileName(path_));
    for (const auto& c : cases) {
        EXPECT_FALSE(writer_.setDbFileName(c.path)) << c.path;
        EXPECT_FALSE(writer_.isReady()) << "the old database is closed as well";
        const auto reports = TakeSystemLog();
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].priority, LOG_ERR);
        EXPECT_EQ(reports[0].text,
                  "SOAP-ERROR CVsysEventLogSQLiteWriter::setDbFileName: Unable to open log "
                  "database [" +
                      c.path + "]. " + c.reason);
    }
    EXPECT_EQ(writer_("SOAP", 3, "dropped", -1, nullptr, 5), 0);
    EXPECT_TRUE(TakeSystemLog().empty()) << "silently";
}

TEST_F(SQLiteWriter, ReportsAnEntryItCouldNotStore) {
    ASSERT_TRUE(writer_.setDbFileName(path_));
    CVSQLite3Database(path_).ExecuteUpdateQuery("DROP TABLE metatable;");
    EXPECT_EQ(writer_("SOAP", 3, "lost", -1, nullptr, 5), 0);
    EXPECT_FALSE(writer_.setMakeDbTruncateFlag(true));
    const auto reports = TakeSystemLog();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].text,
              "SOAP-ERROR CVsysEventLogSQLiteWriter::operator(): Unable to create module "
              "[SOAP] table [log_soap]. no such table: metatable");
    EXPECT_EQ(reports[1].text,
              "SOAP-ERROR CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag: no such table: metatable");
    EXPECT_TRUE(writer_.isReady()) << "the next entry may fare better";
}
