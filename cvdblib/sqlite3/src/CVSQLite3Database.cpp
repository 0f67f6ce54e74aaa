#include "cvdblib/sqlite3/src/CVSQLite3Database.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <thread>
#include <utility>

#include "CVconThread.h"
#include "PathRoutines.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "cvdblib/sqlite3/src/SqliteConnection.h"

using namespace quorbel;

namespace {

using std::chrono::milliseconds;

constexpr int kAttempts = 50;
constexpr milliseconds kPause{500};
constexpr int kBusyTimeoutMs = 60000;

// In the order of CVSQLite3Database::Statement.
constexpr const char* kKeywords[] = {
    "BEGIN IMMEDIATE TRANSACTION ",
    "BEGIN EXCLUSIVE TRANSACTION ",
    "COMMIT TRANSACTION ",
    "ROLLBACK TRANSACTION ",
};

void SleepFor(milliseconds time) {
    std::this_thread::sleep_for(time);
}

std::string SynchronousPragma(int level) {
    return "PRAGMA synchronous=" + std::to_string(level) + ";";
}

bool IsReadOnly(int code) {
    return (code & 0xFF) == SQLITE_READONLY;  // the extended forms too: a file replaced under us, say
}

/// For cleaning up after a failure: that one is reported, not the clean-up's.
void Quietly(const std::function<void()>& cleanUp) {
    try {
        cleanUp();
    } catch (const CVDBexception&) {
    }
}

}  // namespace

namespace quorbel {

bool IsReadableDatabase(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && MayAccess(path, R_OK);
}

bool IsWritableDatabase(const std::string& path) {
    // For SQLite these two are databases that vanish with the connection.
    if (path.empty() || path == ":memory:") return false;
    if (!MayAccess(ParentDirectory(path), W_OK | X_OK)) return false;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT;
    return S_ISREG(status.st_mode) && MayAccess(path, R_OK | W_OK);
}

}  // namespace quorbel

CVSQLite3Database::CVSQLite3Database(std::string path, Sleep sleep)
    : connection_(std::make_unique<SqliteConnection>(std::move(path))),
      sleep_(sleep ? std::move(sleep) : SleepFor) {
    if (!Open(false)) connection_->Fail(__LINE__, "Unable to open DB [" + connection_->Path() + "]");
    if (!Initialize(false)) connection_->Fail(__LINE__, "Unable to initialize DB.");
}

CVSQLite3Database::CVSQLite3Database(std::string path, const TableDescription& table, Sleep sleep)
    : CVSQLite3Database(std::move(path), std::move(sleep)) {
    if (!TableExists(table.name) && !CreateMissing(table)) {
        connection_->Fail(__LINE__, "Unable to set DB schema.");
    }
}

CVSQLite3Database::~CVSQLite3Database() = default;

void CVSQLite3Database::ForgetError() {
    if (!connection_->IsOurs()) OpenInThisProcess();
    connection_->SetError({});
}

void CVSQLite3Database::OpenInThisProcess() {
    const bool wasOpen = connection_->IsOpen();
    const bool wasReady = ready_;
    connection_->Abandon();
    ready_ = inTransaction_ = false;
    if (wasOpen && Open(exclusiveUse_) && wasReady) Initialize(true);
}

bool CVSQLite3Database::CanRunStatements() const {
    return connection_->IsOpen() && ready_;
}

int CVSQLite3Database::GetLastErrorCode() const {
    return connection_->Error().code;
}

const std::string& CVSQLite3Database::GetLastErrorMessage() const {
    return connection_->Error().text;
}

bool CVSQLite3Database::RetryWhileBusy(int (SqliteConnection::*attempt)()) {
    for (int left = kAttempts;;) {
        const int code = (*connection_.*attempt)();
        if (code == SQLITE_OK) ForgetError();
        if (!CountsAsBusy(code) || --left == 0 || CVconThread::KillRequested()) return code == SQLITE_OK;
        sleep_(kPause);
    }
}

bool CVSQLite3Database::Open(bool exclusiveUse) {
    ForgetError();
    if (connection_->IsOpen()) return true;
    if (!RetryWhileBusy(&SqliteConnection::Open)) return false;
    exclusiveUse_ = exclusiveUse;
    return true;
}

bool CVSQLite3Database::Close() {
    ForgetError();
    if (!connection_->IsOpen() || !RetryWhileBusy(&SqliteConnection::Close)) return false;
    ready_ = false;
    inTransaction_ = false;
    return true;
}

bool CVSQLite3Database::Initialize(bool force) {
    ForgetError();
    if (!connection_->IsOpen()) return false;
    // The probe runs before the time-out is set: a locked file passes it, so there is nothing to wait for.
    ready_ = force || Probe();
    if (ready_ && synchronous_) SetSynchronousAgain();
    UseBusyWait();
    return ready_;
}

void CVSQLite3Database::SetSynchronousAgain() {
    // A locked file may refuse it: SQLite's own level, which stays then, is the safer one.
    connection_->Execute(SynchronousPragma(*synchronous_));
    ForgetError();
}

void CVSQLite3Database::UseBusyWait() {
    if (!busyWait_) return connection_->SetBusyTimeout(kBusyTimeoutMs);
    const auto ask = [](void* busyWait, int asked) {
        return (*static_cast<BusyWait*>(busyWait))(asked) ? 1 : 0;
    };
    connection_->SetBusyHandler(ask, &busyWait_);
}

bool CVSQLite3Database::Probe() {
    CVSQLite3ResultSet names;
    const int code = connection_->Select("SELECT name FROM sqlite_master LIMIT 1;", names);
    if ((code & 0xFF) == SQLITE_BUSY) ForgetError();
    return code == SQLITE_OK || (code & 0xFF) == SQLITE_BUSY;
}

void CVSQLite3Database::Reopen() {
    Close();
    if (!Open(false)) connection_->Fail(__LINE__, "Unable to open DB [" + connection_->Path() + "]");
    if (!Initialize(true)) connection_->Fail(__LINE__, "Unable to initialize DB.");
}

bool CVSQLite3Database::IsOpen() {
    ForgetError();
    return connection_->IsOpen();
}

bool CVSQLite3Database::IsReady() {
    ForgetError();
    return CanRunStatements();
}

bool CVSQLite3Database::IsAutoCommit() {
    ForgetError();
    return connection_->IsOpen() && connection_->IsAutoCommit();
}

void CVSQLite3Database::SetBusyWait(BusyWait wait) {
    ForgetError();
    busyWait_ = std::move(wait);
    if (connection_->IsOpen()) UseBusyWait();
}

bool CVSQLite3Database::CreateFunction(const std::string& name, SqlFunction function, int argumentCount,
                                       int encoding) {
    ForgetError();
    if (!connection_->IsOpen() || name.empty() || function == nullptr) return false;
    return connection_->AddFunction(name, function, argumentCount, encoding) == SQLITE_OK;
}

int CVSQLite3Database::ExecuteUpdateQueryCallback(void* counter, int, char**, char**) noexcept {
    ++*static_cast<int*>(counter);
    return 0;
}

void CVSQLite3Database::Update(int line, const std::string& sql, int* returnedRows) {
    const auto onRow = returnedRows != nullptr ? ExecuteUpdateQueryCallback : nullptr;
    if (connection_->Execute(sql, onRow, returnedRows) == SQLITE_OK) return;
    connection_->Fail(line, "Unable to execute UPDATE query [" + sql + "].");
}

bool CVSQLite3Database::ExecuteUpdateQuery(const std::string& sql) {
    ForgetError();
    if (!CanRunStatements()) return false;
    Update(__LINE__, sql, nullptr);
    return true;
}

bool CVSQLite3Database::ExecuteUpdateQuery(const std::string& sql, CVSQLite3ResultSet& result,
                                           std::int64_t& lastRowId) {
    ForgetError();
    if (!CanRunStatements()) return false;
    Update(__LINE__, sql, nullptr);
    result.TakeTable(nullptr, 0, 0);
    result.SetAffectedRows(connection_->ChangedRows());
    lastRowId = std::max<std::int64_t>(0, connection_->LastRowId());
    return true;
}

bool CVSQLite3Database::ExecuteUpdateQuery(const std::string& sql, int& returnedRows, int& affectedRows) {
    ForgetError();
    if (!CanRunStatements()) return false;
    returnedRows = 0;
    Update(__LINE__, sql, &returnedRows);
    affectedRows = connection_->ChangedRows();
    return true;
}

bool CVSQLite3Database::ExecuteSelectQuery(const std::string& sql, CVSQLite3ResultSet& result) {
    ForgetError();
    if (!CanRunStatements()) return false;
    if (connection_->Select(sql, result) != SQLITE_OK) {
        connection_->Fail(__LINE__, "Unable to execute SELECT query [" + sql + "].");
    }
    return true;
}

bool CVSQLite3Database::TableExists(const std::string& name) {
    ForgetError();
    if (!connection_->IsOpen()) return false;
    CVSQLite3ResultSet names;
    const std::string sql =
        "SELECT name FROM sqlite_master WHERE type='table' AND name='" + DoubleQuotes(name) + "';";
    if (connection_->Select(sql, names) != SQLITE_OK) {
        connection_->Fail(__LINE__, "Unable to check table '" + name + "' existance");
    }
    return names.GetRowCount() > 0;
}

bool CVSQLite3Database::SetSchema(const TableDescription& table) {
    ForgetError();
    if (!connection_->IsOpen()) return false;
    try {
        return ExecuteUpdateQuery("DROP TABLE IF EXISTS " + table.name + ";") &&
               ExecuteUpdateQuery("CREATE TABLE " + table.name + " (" + table.columns + ");");
    } catch (const CVDBexception&) {
        return false;
    }
}

bool CVSQLite3Database::CreateMissing(const TableDescription& table) {
    // Another process may have created and filled it since the caller looked; SetSchema would empty it.
    return InTransaction(TransactionKind::Exclusive, kTryOnce,
                         [&] { return TableExists(table.name) || SetSchema(table); });
}

bool CVSQLite3Database::SetSynchronous(int level) {
    try {
        if (!ExecuteUpdateQuery(SynchronousPragma(level)) || GetLastErrorCode() != SQLITE_OK) return false;
        synchronous_ = level;
        return true;
    } catch (const CVDBexception&) {
        return false;
    }
}

std::string CVSQLite3Database::DoubleQuotes(std::string_view text) {
    std::string doubled;
    doubled.reserve(text.size());
    for (const char c : text) doubled.append(c == '\'' ? 2 : 1, c);
    return doubled;
}

void CVSQLite3Database::ReplaceQuotes(char* buffer) {
    for (; *buffer != '\0'; ++buffer) {
        if (*buffer == '\'') *buffer = '"';
    }
}

bool CVSQLite3Database::Begins(Statement statement) {
    return statement == Statement::BeginImmediate || statement == Statement::BeginExclusive;
}

bool CVSQLite3Database::BeginImmediateTransaction(const std::string& name, const TransactionRetry& retry) {
    return RunTransactionStatement(Statement::BeginImmediate, name, retry);
}

bool CVSQLite3Database::BeginExclusiveTransaction(const std::string& name, const TransactionRetry& retry) {
    return RunTransactionStatement(Statement::BeginExclusive, name, retry);
}

bool CVSQLite3Database::CommitTransaction(const std::string& name, const TransactionRetry& retry) {
    return RunTransactionStatement(Statement::Commit, name, retry);
}

bool CVSQLite3Database::RollbackTransaction(const std::string& name, const TransactionRetry& retry) {
    return RunTransactionStatement(Statement::Rollback, name, retry);
}

bool CVSQLite3Database::RunTransactionStatement(Statement statement, const std::string& name,
                                                const TransactionRetry& retry) {
    ForgetError();
    const bool begins = Begins(statement);
    if (!connection_->IsOpen() || inTransaction_ == begins) return false;
    static_assert(std::size(kKeywords) == static_cast<std::size_t>(Statement::Rollback) + 1);
    if (!RepeatWhileBusy(statement, kKeywords[static_cast<std::size_t>(statement)] + name + ";", retry)) {
        return false;
    }
    inTransaction_ = begins;
    return true;
}

bool CVSQLite3Database::RepeatWhileBusy(Statement statement, const std::string& sql,
                                        const TransactionRetry& retry) {
    SqliteError error;
    for (int left = std::max(1, retry.attempts); left > 0; --left) {
        try {
            if (ExecuteUpdateQuery(sql)) return true;
            break;
        } catch (const CVDBexception& failure) {
            error = connection_->Error();
            if (Begins(statement) && IsReadOnly(failure.GetErrorCode())) {
                ReopenAfter(error);
            } else if (!CountsAsBusy(failure.GetErrorCode())) {
                Quietly([this] { Reopen(); });
                connection_->SetError(error);
                throw;
            }
        }
        if (!retry.retry || CVconThread::KillRequested()) break;
        sleep_(retry.wait);
    }
    ReopenAfter(error);
    return false;
}

void CVSQLite3Database::ReopenAfter(const SqliteError& error) {
    Reopen();
    connection_->SetError(error);
}

bool CVSQLite3Database::InTransaction(TransactionKind kind, const TransactionRetry& retry,
                                      const std::function<bool()>& body) {
    const auto begin =
        kind == TransactionKind::Immediate ? Statement::BeginImmediate : Statement::BeginExclusive;
    if (!RunTransactionStatement(begin, "", retry)) return false;
    try {
        if (body() && RunTransactionStatement(Statement::Commit, "", retry)) return true;
    } catch (...) {
        RollBackKeepingError(retry);
        throw;
    }
    RollBackKeepingError(retry);
    return false;
}

void CVSQLite3Database::RollBackKeepingError(const TransactionRetry& retry) {
    const SqliteError kept = connection_->Error();
    // Nothing to roll back is fine: SQLite, or a reopen, has then ended the transaction already.
    Quietly([&] { RunTransactionStatement(Statement::Rollback, "", retry); });
    connection_->SetError(kept);
}

bool CVSQLite3Database::ExecuteUpdateInTransaction(const std::string& sql, CVSQLite3ResultSet& result,
                                                   std::int64_t& lastRowId) {
    return InTransaction(TransactionKind::Exclusive, kTryForMinutes,
                         [&] { return ExecuteUpdateQuery(sql, result, lastRowId); });
}

bool CVSQLite3Database::ExecuteSelectInTransaction(const std::string& sql, CVSQLite3ResultSet& result) {
    return InTransaction(TransactionKind::Immediate, kTryForMinutes,
                         [&] { return ExecuteSelectQuery(sql, result); });
}

bool CVSQLite3Database::SimpleBegin() {
    if (inTransaction_ || !ExecuteUpdateQuery("BEGIN;")) return false;
    inTransaction_ = true;
    return true;
}

bool CVSQLite3Database::SimpleCommit() {
    if (!ExecuteUpdateQuery("COMMIT;")) return false;
    inTransaction_ = false;
    return true;
}
