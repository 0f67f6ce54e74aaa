#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class CVSQLite3ResultSet;
struct sqlite3_context;
struct sqlite3_value;

namespace quorbel {

class SqliteConnection;
struct SqliteError;

/// A table's name and its column list, both as they go into CREATE TABLE.
struct TableDescription {
    std::string name;
    std::string columns;
};

/// How long a transaction statement is repeated while the database is busy. SQLite waits up to 60 s within
/// each attempt; the attempts come on top of that.
struct TransactionRetry {
    bool retry = false;
    int attempts = 1;
    std::chrono::milliseconds wait{0};
};
inline constexpr TransactionRetry kTryOnce{};
inline constexpr TransactionRetry kTryForMinutes{true, 4000, std::chrono::milliseconds(30)};

enum class TransactionKind { Immediate, Exclusive };

// These look at a database file without opening it: closing a second descriptor would drop SQLite's locks on
// it. SQLite answers an unusable path with a code that counts as busy, so that CVSQLite3Database tries it for
// 25 s; callers that cannot wait ask here first.

/// Whether `path` is a regular file that this process may read.
bool IsReadableDatabase(const std::string& path);

/// Whether SQLite could write a database at `path`: the directory takes new files (the journals lie beside
/// the database), and what is there already is a regular file that may be read and written.
bool IsWritableDatabase(const std::string& path);

}  // namespace quorbel

/// One connection to one database file, and the program's only door to SQLite.
///
/// Serves one thread. Operations on a connection that is not open, or for statements not ready, answer false
/// without touching SQLite; a statement that SQLite refuses throws CVDBexception. Each public operation
/// forgets the last error first; one that fails leaves SQLite's code and text as the last error, also where
/// it reopened the database afterwards. SQL text is taken as it is: double the quotes of what comes from
/// outside with DoubleQuotes.
///
/// A child process may go on using the object: at the first call it opens a connection of its own, without a
/// transaction and without the functions made known to the other one, and leaves the parent's alone.
///
/// A path that cannot be opened takes the constructor and Open 25 s, see IsReadableDatabase. A thread whose end
/// was asked for (CVconThread::Kill) waits no longer, here or for a busy database.
class CVSQLite3Database {
public:
    using Sleep = std::function<void(std::chrono::milliseconds)>;
    using SqlFunction = void (*)(sqlite3_context*, int, sqlite3_value**);

    /// Opens (creating the file) and initialises. Throws "Unable to open DB [..]" or "Unable to initialize
    /// DB.". `sleep` is used between retries; it is there for tests.
    explicit CVSQLite3Database(std::string path, Sleep sleep = {});
    /// The same, and creates the table when it is missing; throws "Unable to set DB schema." besides. Of many
    /// processes that find it missing one creates it, and none empties it again.
    CVSQLite3Database(std::string path, const quorbel::TableDescription& table, Sleep sleep = {});
    /// Closes without waiting; a transaction in progress is rolled back.
    ~CVSQLite3Database();

    CVSQLite3Database(const CVSQLite3Database&) = delete;
    CVSQLite3Database& operator=(const CVSQLite3Database&) = delete;

    bool Open(bool exclusiveUse);
    /// Waits up to 25 s for a PreparedStatement that is still alive.
    bool Close();
    /// Makes statements possible. Unless forced, only when the file can be read as a database; one that is
    /// locked at the moment passes.
    bool Initialize(bool force);
    /// Loses a transaction in progress and the functions; keeps the busy wait and the synchronous mode. Throws
    /// CVDBexception.
    void Reopen();

    bool IsOpen();
    bool IsReady();
    bool IsAutoCommit();
    bool IsExclusiveUse() const { return exclusiveUse_; }

    /// Asked while another connection holds the database, with how often it was asked for this statement:
    /// waits and answers true, or gives up.
    using BusyWait = std::function<bool(int asked)>;
    /// Takes the place of the 60 s, also when the database is opened again. Must not throw.
    void SetBusyWait(BusyWait wait);

    /// Makes `function` known to SQL; `encoding` is one of SQLite's text encodings. The function must not
    /// throw.
    bool CreateFunction(const std::string& name, SqlFunction function, int argumentCount, int encoding);

    bool ExecuteUpdateQuery(const std::string& sql);
    /// `lastRowId` is the connection's last inserted row, 0 when that is negative. The result's affected rows
    /// are those of the last statement that could change any: stale after a CREATE, say.
    bool ExecuteUpdateQuery(const std::string& sql, CVSQLite3ResultSet& result, std::int64_t& lastRowId);
    /// For statements that also return rows, such as a PRAGMA: counts them.
    bool ExecuteUpdateQuery(const std::string& sql, int& returnedRows, int& affectedRows);
    static int ExecuteUpdateQueryCallback(void* counter, int columnCount, char** values,
                                          char** names) noexcept;
    bool ExecuteSelectQuery(const std::string& sql, CVSQLite3ResultSet& result);

    /// Compares the name with its case, unlike SQL itself.
    bool TableExists(const std::string& name);
    /// Drops the table, with its rows, and creates it anew.
    bool SetSchema(const quorbel::TableDescription& table);
    bool SetSynchronous(int level);

    // The name goes into the statement as it is: an identifier or nothing. A failure reopens the database, so
    // that no transaction is in progress after it.
    bool BeginImmediateTransaction(const std::string& name, const quorbel::TransactionRetry& retry);
    bool BeginExclusiveTransaction(const std::string& name, const quorbel::TransactionRetry& retry);
    bool CommitTransaction(const std::string& name, const quorbel::TransactionRetry& retry);
    bool RollbackTransaction(const std::string& name, const quorbel::TransactionRetry& retry);

    /// Runs `body` inside a transaction: commits when it answers true, rolls back when it answers false or
    /// throws. True once committed.
    bool InTransaction(quorbel::TransactionKind kind, const quorbel::TransactionRetry& retry,
                       const std::function<bool()>& body);
    /// May take minutes on a busy database.
    bool ExecuteUpdateInTransaction(const std::string& sql, CVSQLite3ResultSet& result,
                                    std::int64_t& lastRowId);
    bool ExecuteSelectInTransaction(const std::string& sql, CVSQLite3ResultSet& result);

    bool SimpleBegin();
    bool SimpleCommit();

    int GetLastErrorCode() const;
    const std::string& GetLastErrorMessage() const;

    /// For PreparedStatement.
    quorbel::SqliteConnection& Connection() { return *connection_; }

    /// For a text that stands between single quotes in SQL.
    static std::string DoubleQuotes(std::string_view text);
    /// Turns each single quote of a zero-terminated buffer into a double quote.
    static void ReplaceQuotes(char* buffer);

private:
    enum class Statement { BeginImmediate, BeginExclusive, Commit, Rollback };

    /// Every public operation begins here.
    void ForgetError();
    void OpenInThisProcess();
    bool CanRunStatements() const;

    bool RetryWhileBusy(int (quorbel::SqliteConnection::*attempt)());
    bool Probe();
    void SetSynchronousAgain();
    void UseBusyWait();

    void Update(int line, const std::string& sql, int* returnedRows);
    bool CreateMissing(const quorbel::TableDescription& table);

    static bool Begins(Statement statement);
    bool RunTransactionStatement(Statement statement, const std::string& name,
                                 const quorbel::TransactionRetry& retry);
    bool RepeatWhileBusy(Statement statement, const std::string& sql, const quorbel::TransactionRetry& retry);
    void ReopenAfter(const quorbel::SqliteError& error);
    void RollBackKeepingError(const quorbel::TransactionRetry& retry);

    std::unique_ptr<quorbel::SqliteConnection> connection_;
    Sleep sleep_;
    BusyWait busyWait_;               // null: SQLite's own waits
    std::optional<int> synchronous_;  // null: SQLite's own level
    bool ready_ = false;
    bool inTransaction_ = false;
    bool exclusiveUse_ = false;
};
