#include "cvdblib/sqlite3/src/CVSQLite3Database.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <semaphore>
#include <thread>

#include "CVconThread.h"
#include "NoCancellation.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "cvdblib/sqlite3/src/SqliteConnection.h"
#include "tests/support/RunTogether.h"
#include "tests/support/TempDir.h"

using namespace quorbel;

namespace {

using std::chrono::milliseconds;

/// What the action throws; one without text when it throws nothing.
CVDBexception Thrown(const std::function<void()>& action) {
    try {
        action();
    } catch (const CVDBexception& thrown) {
        return thrown;
    }
    return {0, "", 0, "nothing thrown", ""};
}

/// Counts the pauses instead of taking them.
struct Pauses {
    int count = 0;
    CVSQLite3Database::Sleep Sleep() {
        return [this](milliseconds time) {
            EXPECT_EQ(time, milliseconds(500));
            ++count;
        };
    }
};

int RowsOf(const std::string& path) {
    CVSQLite3ResultSet rows;
    CVSQLite3Database(path).ExecuteSelectQuery("SELECT a FROM t;", rows);
    return rows.GetRowCount();
}

void Insert(CVSQLite3Database& database, int from, int to) {
    for (int number = from; number < to; ++number) {
        if (!database.ExecuteUpdateQuery("INSERT INTO t VALUES (" + std::to_string(number) + ");"))
            throw number;
    }
}

/// A thread that holds one of SQLite's locks for a moment, and then does nothing until it is destroyed: its
/// end, or any other use of memory, could leave the allocator's locks taken in a child process as well.
class LockHolder {
public:
    explicit LockHolder(int lock) : thread_([this, lock] { Hold(sqlite3_mutex_alloc(lock)); }) {
        held_.acquire();
    }
    ~LockHolder() {
        mayEnd_.release();
        thread_.join();
    }

private:
    void Hold(sqlite3_mutex* mutex) {
        sqlite3_mutex_enter(mutex);
        held_.release();
        std::this_thread::sleep_for(milliseconds(30));
        sqlite3_mutex_leave(mutex);
        mayEnd_.acquire();
    }

    std::binary_semaphore held_{0};
    std::binary_semaphore mayEnd_{0};
    std::thread thread_;
};

/// Would wait for minutes, also where it cannot be ended.
class PatientBody : public CVconDelegate {
public:
    explicit PatientBody(const std::string& path) : path_(path) {}

    void DoWork(pthread_t) override {
        const NoCancellation asInADestructor;
        CVSQLite3Database database(path_);
        began = database.BeginImmediateTransaction("", kTryForMinutes);
        code = database.GetLastErrorCode();
    }

    std::atomic<bool> began{false};
    std::atomic<int> code{0};

private:
    const std::string path_;
};

}  // namespace

TEST(CVSQLite3Database, TriesAPathItCannotOpenFiftyTimes) {
    TempDir dir;
    Pauses pauses;
    const auto thrown = Thrown([&] { CVSQLite3Database(dir / "none/x.sdb", pauses.Sleep()); });
    EXPECT_EQ(pauses.count, 49);
    EXPECT_EQ(thrown.GetMessage(), "Unable to open DB [" + dir / "none/x.sdb" + "]");
    EXPECT_EQ(thrown.GetErrorCode(), 14);
    EXPECT_EQ(thrown.GetFile(), "CVSQLite3Database");
    EXPECT_EQ(thrown.GetSystemMessage(), "unable to open database file");
}

TEST(CVSQLite3Database, RefusesAFileThatIsNoDatabaseAtOnce) {
    TempDir dir;
    Pauses pauses;
    const std::string path = dir.Write("garbage.sdb", std::string(5000, 'x'));
    const auto thrown = Thrown([&] { CVSQLite3Database(path, pauses.Sleep()); });
    EXPECT_EQ(thrown.GetMessage(), "Unable to initialize DB.");
    EXPECT_EQ(thrown.GetSystemMessage(), "file is not a database");
    EXPECT_EQ(pauses.count, 0);
    EXPECT_EQ(ReadFile(path), std::string(5000, 'x'));
}

TEST(CVSQLite3Database, IsReadyWhileAnotherConnectionLocksTheFile) {
    TempDir dir;
    CVSQLite3Database loader(dir / "x.sdb", {"t", "a"});
    ASSERT_TRUE(loader.BeginExclusiveTransaction("", kTryOnce));
    CVSQLite3Database reader(dir / "x.sdb");
    EXPECT_TRUE(reader.IsReady());
    EXPECT_EQ(reader.GetLastErrorCode(), 0);
}

TEST(CVSQLite3Database, RunsStatementsOnlyBetweenInitialiseAndClose) {
    TempDir dir;
    CVSQLite3Database database(dir / "x.sdb");
    EXPECT_TRUE(database.Open(true)) << "open already";
    EXPECT_FALSE(database.IsExclusiveUse());
    EXPECT_TRUE(database.Close());
    EXPECT_FALSE(database.Close());
    EXPECT_FALSE(database.IsOpen() || database.IsReady() || database.IsAutoCommit());
    EXPECT_FALSE(database.Initialize(true) || database.TableExists("t") || database.SetSchema({"t", "a"}));

    EXPECT_TRUE(database.Open(true) && database.IsExclusiveUse());
    EXPECT_TRUE(database.IsOpen() && !database.IsReady() && database.IsAutoCommit());
    CVSQLite3ResultSet result;
    EXPECT_FALSE(database.ExecuteUpdateQuery("CREATE TABLE t (a);"));
    EXPECT_FALSE(database.ExecuteSelectQuery("SELECT 1;", result));
    EXPECT_FALSE(database.TableExists("t"));

    EXPECT_TRUE(database.Initialize(false));
    EXPECT_TRUE(database.ExecuteUpdateQuery("CREATE TABLE t (a);"));
}

TEST(CVSQLite3Database, CreatesAMissingTableAndLeavesAnExistingOne) {
    TempDir dir;
    const TableDescription table{"t", "a INTEGER"};
    ASSERT_TRUE(CVSQLite3Database(dir / "x.sdb", table).ExecuteUpdateQuery("INSERT INTO t VALUES (1);"));
    EXPECT_TRUE(CVSQLite3Database(dir / "x.sdb", table).IsReady());
    EXPECT_EQ(RowsOf(dir / "x.sdb"), 1);
    EXPECT_EQ(Thrown([&] {
                  CVSQLite3Database(dir / "x.sdb", {"bad", "a,,"});
              }).GetMessage(),
              "Unable to set DB schema.");
}

TEST(CVSQLite3Database, KeepsEveryRowWhenManyProcessesFindTheTableMissing) {
    TempDir dir;
    RunTogether(12, [&](int number) {
        CVSQLite3Database database(dir / "x.sdb", {"t", "a INTEGER"});
        database.ExecuteUpdateQuery("INSERT INTO t VALUES (" + std::to_string(number) + ");");
    });
    EXPECT_EQ(RowsOf(dir / "x.sdb"), 12);
}

TEST(CVSQLite3Database, TellsBeforehandWhichPathsItCanUse) {
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

TEST(CVSQLite3Database, TakesMoreCodesForBusyThanSqliteDoes) {
    for (const int code :
         {SQLITE_BUSY, SQLITE_LOCKED, SQLITE_NOMEM, SQLITE_IOERR, SQLITE_CORRUPT, SQLITE_FULL,
          SQLITE_CANTOPEN, SQLITE_NOTADB, SQLITE_BUSY_SNAPSHOT, SQLITE_IOERR_READ}) {
        EXPECT_TRUE(CountsAsBusy(code)) << code;
    }
    for (const int code : {SQLITE_OK, SQLITE_ERROR, SQLITE_PERM, SQLITE_READONLY, SQLITE_SCHEMA,
                           SQLITE_CONSTRAINT, SQLITE_CONSTRAINT_UNIQUE, SQLITE_READONLY_DBMOVED}) {
        EXPECT_FALSE(CountsAsBusy(code)) << code;
    }
}

TEST(CVSQLite3Database, LosesNothingWhenItIsCarriedOverForks) {
    for (const char* mode : {"WAL", "DELETE"}) {
        TempDir dir;
        auto database = std::make_unique<CVSQLite3Database>(dir / "x.sdb", TableDescription{"t", "a UNIQUE"});
        ASSERT_TRUE(database->ExecuteUpdateQuery("PRAGMA journal_mode=" + std::string(mode) + ";"));
        Insert(*database, 0, 10);
        int gate[2];
        ASSERT_EQ(pipe(gate), 0);
        const pid_t child = StartChild([&] {
            Insert(*database, 100, 115);
            if (InChildProcess([&] { Insert(*database, 1000, 1005); }) != Child::Finished) throw 1;
            char none;
            close(gate[1]);
            while (read(gate[0], &none, 1) > 0) {
            }
            Insert(*database, 200, 215);  // the parent has closed: its clean-up must have spared ours
        });
        Insert(*database, 10, 15);
        database.reset();
        close(gate[0]);
        close(gate[1]);
        EXPECT_EQ(WaitForChild(child), Child::Finished) << mode;
        EXPECT_EQ(RowsOf(dir / "x.sdb"), 50) << mode;
    }
}

TEST(CVSQLite3Database, LeavesATransactionOverAForkToTheParent) {
    TempDir dir;
    CVSQLite3Database database(dir / "x.sdb", {"t", "a"});
    ASSERT_TRUE(database.BeginImmediateTransaction("", kTryOnce));
    Insert(database, 0, 1);
    EXPECT_EQ(InChildProcess([&] {
                  CVSQLite3ResultSet rows;
                  if (!database.ExecuteSelectQuery("SELECT a FROM t;", rows) || rows.GetRowCount() != 0)
                      throw 1;
                  database.ExecuteUpdateQuery("PRAGMA busy_timeout=0;");
                  if (database.BeginImmediateTransaction("", kTryOnce)) throw 2;
              }),
              Child::Finished);
    EXPECT_TRUE(database.CommitTransaction("", kTryOnce));
    EXPECT_EQ(RowsOf(dir / "x.sdb"), 1);
}

TEST(CVSQLite3Database, SurvivesForksWhileThreadsHoldTheLibrarysLocks) {
    TempDir dir;
    const CVSQLite3Database creator(dir / "x.sdb", {"t", "a"});
    for (const int lock : {SQLITE_MUTEX_STATIC_MAIN, SQLITE_MUTEX_STATIC_MEM, SQLITE_MUTEX_STATIC_OPEN,
                           SQLITE_MUTEX_STATIC_PRNG, SQLITE_MUTEX_STATIC_LRU, SQLITE_MUTEX_STATIC_PMEM,
                           SQLITE_MUTEX_STATIC_VFS1, SQLITE_MUTEX_STATIC_VFS2, SQLITE_MUTEX_STATIC_VFS3}) {
        LockHolder holder(lock);
        EXPECT_EQ(InChildProcess([&] {
                      alarm(5);
                      sqlite3_mutex* const mutex = sqlite3_mutex_alloc(lock);
                      if (sqlite3_mutex_try(mutex) != SQLITE_OK) throw lock;
                      sqlite3_mutex_leave(mutex);
                      CVSQLite3Database own(dir / "x.sdb");
                      Insert(own, lock, lock + 1);
                  }),
                  Child::Finished)
            << lock;
    }
}

// A thread that makes the random numbers start anew takes the lock of the list of file layers inside theirs.
TEST(CVSQLite3Database, TakesTheLibrarysLocksForAForkInTheLibrarysOrder) {
    TempDir dir;
    const CVSQLite3Database opened(dir / "x.sdb");
    EXPECT_EQ(InChildProcess([] {
                  alarm(10);
                  std::atomic<bool> stop{false};
                  std::thread random([&] {
                      for (char byte = 0; !stop; sqlite3_randomness(1, &byte)) sqlite3_randomness(0, nullptr);
                  });
                  for (int number = 0; number < 100; ++number) {
                      const pid_t child = fork();
                      if (child == 0) _exit(0);
                      waitpid(child, nullptr, 0);
                  }
                  stop = true;
                  random.join();
              }),
              Child::Finished);
}

TEST(CVSQLite3Database, GivesUpABusyDatabaseWhenItsThreadIsKilled) {
    TempDir dir;
    CVSQLite3Database holder(dir / "x.sdb", {"t", "a"});
    ASSERT_TRUE(holder.BeginImmediateTransaction("", kTryOnce));
    CVSQLite3ResultSet limit;
    ASSERT_TRUE(holder.ExecuteSelectQuery("PRAGMA busy_timeout;", limit));
    EXPECT_STREQ(limit.GetCell(0, 0), "60000");
    PatientBody body(dir / "x.sdb");
    CVconThread thread(&body);
    thread.Create();
    std::this_thread::sleep_for(milliseconds(50));
    thread.Kill();
    ASSERT_TRUE(thread.WaitForEnd(std::chrono::seconds(20)));
    EXPECT_FALSE(body.began);
    EXPECT_EQ(body.code & 0xFF, SQLITE_BUSY);
}
