#include "syslib/CVsysEventLogSQLiteWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <vector>

#include "LockFile.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SystemLogRecorder.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

ino_t NumberOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

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
    const auto newestOf = [](const std::string& table) {
        return "SELECT '" + table + "',module,timestamp,level,message,line,srcfile FROM " + table +
               " ORDER BY id DESC;";
    };
    for (const auto& c : cases) {
        ASSERT_EQ(writer_.DoWork(c.module, c.level, "it's", c.extra, c.userText, 5), 1) << c.module;
        const std::string table = std::string(c.row).substr(0, std::string(c.row).find('|'));
        EXPECT_EQ(Row(newestOf(table)), c.row);
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

TEST_F(SQLiteWriter, OpensADatabaseAnewThatWasRemoved) {
    ASSERT_TRUE(writer_.setDbFileName(path_));
    ASSERT_EQ(writer_("SOAP", 3, "gone", -1, nullptr, 5), 1);
    for (const char* end : {"", "-wal", "-shm"}) std::filesystem::remove(path_ + end);
    EXPECT_EQ(writer_("SOAP", 3, "in the new one", -1, nullptr, 5), 1);
    EXPECT_EQ(Row("SELECT COUNT(*),message FROM log_soap;"), "1|in the new one");
}

TEST_F(SQLiteWriter, SharesNothingWithADatabaseThatWasRemovedAlone) {
    ASSERT_TRUE(writer_.setDbFileName(path_));
    CVsysEventLogSQLiteWriter other("CLI");
    ASSERT_TRUE(other.setDbFileName(path_));
    ASSERT_EQ(other("CLI", 3, "gone", -1, nullptr, 5), 1);
    const auto memory = NumberOf(path_ + "-shm");
    std::filesystem::remove(path_);
    EXPECT_EQ(writer_("SOAP", 3, "in the new one", -1, nullptr, 5), 1);
    EXPECT_NE(NumberOf(path_ + "-shm"), memory) << "the other writer still uses it";
    EXPECT_EQ(other("CLI", 3, "there, too", -1, nullptr, 5), 1);
    EXPECT_EQ(Row("SELECT (SELECT COUNT(*) FROM log_soap),(SELECT COUNT(*) FROM log_cli);"), "1|1");
    EXPECT_TRUE(TakeSystemLog().empty());
}

TEST_F(SQLiteWriter, OpensADatabaseUnderItsLockWhereThatCanBeHad) {
    {
        const LockFile lock(path_ + ".lock");
        EXPECT_EQ(InChildProcess([this] {
                      BeginLogRun();
                      CountLogWait(std::chrono::milliseconds(59'900), "SOAP");
                      if (writer_.setDbFileName(path_)) throw 0;
                  }),
                  Child::Finished);
    }
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_TRUE(writer_.setDbFileName(path_));
    ASSERT_TRUE(std::filesystem::create_directory(dir_ / "other.sdb.lock"));
    EXPECT_TRUE(writer_.setDbFileName(dir_ / "other.sdb"));
}

TEST_F(SQLiteWriter, LosesNothingWhenItIsCarriedOverAFork) {
    ASSERT_TRUE(writer_.setDbFileName(path_));
    constexpr int kEntries = 60;
    const auto writeAll = [this] {
        for (int entry = 0; entry < kEntries; ++entry) {
            if (writer_("SOAP", 3, "entry", getpid(), nullptr, 5) != 1) throw 0;
        }
    };
    ASSERT_EQ(writer_("SOAP", 3, "entry", -1, nullptr, 5), 1);
    std::vector<pid_t> children(4);
    for (pid_t& child : children) child = StartChild(writeAll);
    writeAll();
    for (const pid_t child : children) EXPECT_EQ(WaitForChild(child), Child::Finished);
    writeAll();
    EXPECT_EQ(Row("SELECT COUNT(*) FROM log_soap;"), std::to_string(1 + 6 * kEntries));
    EXPECT_EQ(Row("SELECT COUNT(DISTINCT line) FROM log_soap;"), "6");
    EXPECT_EQ(Row("PRAGMA integrity_check;"), "ok");
}

// A held database must not cost a request a minute for each of its entries.
TEST_F(SQLiteWriter, WaitsNoLongerThanTheRunMay) {
    ASSERT_TRUE(writer_.setDbFileName(path_));
    ASSERT_EQ(writer_("SOAP", 3, "first", -1, nullptr, 5), 1);
    CVSQLite3Database holder(path_);
    ASSERT_TRUE(holder.BeginImmediateTransaction("held", kTryOnce));
    EXPECT_EQ(InChildProcess([this] {
                  BeginLogRun();
                  CountLogWait(std::chrono::milliseconds(59'700), "SOAP");
                  const auto begin = std::chrono::steady_clock::now();
                  for (int entry = 0; entry < 20; ++entry) {
                      if (writer_("SOAP", 3, "refused", -1, nullptr, 5) != 0) throw 0;
                  }
                  if (std::chrono::steady_clock::now() - begin > std::chrono::seconds(20)) throw 0;
              }),
              Child::Finished);
    ASSERT_TRUE(holder.CommitTransaction("held", kTryOnce));
    EXPECT_EQ(writer_("SOAP", 3, "second", -1, nullptr, 5), 1);
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
