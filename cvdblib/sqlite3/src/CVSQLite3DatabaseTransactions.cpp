#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "cvdblib/sqlite3/src/BusyCode.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"

using namespace quorbel;

namespace {

// In the order of CVSQLite3Database::Statement.
constexpr const char* kKeywords[] = {
    "BEGIN IMMEDIATE TRANSACTION ",
    "BEGIN EXCLUSIVE TRANSACTION ",
    "COMMIT TRANSACTION ",
    "ROLLBACK TRANSACTION ",
};

bool IsReadOnly(int code) {
    return (code & 0xFF) == SQLITE_READONLY;  // the extended forms too: a file replaced under us, say
}

/// For cleaning up after a failure, which is what the caller should hear of.
void Quietly(const std::function<void()>& cleanUp) {
    try {
        cleanUp();
    } catch (const CVDBexception&) {
    }
}

}  // namespace

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
    ClearError();
    const bool begins = Begins(statement);
    if (handle_ == nullptr || inTransaction_ == begins) return false;
    static_assert(std::size(kKeywords) == static_cast<std::size_t>(Statement::Rollback) + 1);
    if (!RepeatWhileBusy(statement, kKeywords[static_cast<std::size_t>(statement)] + name + ";", retry)) {
        return false;
    }
    inTransaction_ = begins;
    return true;
}

bool CVSQLite3Database::RepeatWhileBusy(Statement statement, const std::string& sql,
                                        const TransactionRetry& retry) {
    LastError error;
    for (int left = std::max(1, retry.attempts); left > 0; --left) {
        try {
            if (ExecuteUpdateQuery(sql)) return true;
            break;
        } catch (const CVDBexception& failure) {
            error = lastError_;
            if (Begins(statement) && IsReadOnly(failure.GetErrorCode())) {
                ReopenAfter(error);
            } else if (!CountsAsBusy(failure.GetErrorCode())) {
                Quietly([this] { Reopen(); });
                lastError_ = error;
                throw;
            }
        }
        if (!retry.retry) break;
        sleep_(retry.wait);
    }
    ReopenAfter(error);
    return false;
}

void CVSQLite3Database::ReopenAfter(LastError error) {
    Reopen();
    lastError_ = std::move(error);
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
    const LastError kept = lastError_;
    // Nothing to roll back is fine: SQLite, or a reopen, has then ended the transaction already.
    Quietly([&] { RunTransactionStatement(Statement::Rollback, "", retry); });
    lastError_ = kept;
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
