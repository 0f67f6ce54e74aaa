#include "syslib/CVLogSQLiteProcessor.h"

#include <sys/stat.h>

#include <utility>

#include "CVException.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "cvdblib/sqlite3/src/PreparedStatement.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "syslib/LogStatements.h"

using namespace quorbel;

namespace {

/// Turns the database's exceptions into this layer's.
template <class Action>
auto AsFatal(Action action) {
    try {
        return action();
    } catch (const CVDBexception& failure) {
        throw CVDBProcessorFatalException(failure.GetSystemMessage());
    }
}

[[noreturn]] void FailToOpen(const std::string& path, const std::string& reason) {
    throw CVDBProcessorFatalException("Unable to open log database [" + path + "]. " + reason);
}

std::unique_ptr<CVSQLite3Database> OpenDatabase(const std::string& path, bool create) {
    struct stat status {};
    // SQLite would create the file.
    if (!create && stat(path.c_str(), &status) != 0) FailToOpen(path, GetSystemErrorText());
    try {
        return std::make_unique<CVSQLite3Database>(path);
    } catch (const CVDBexception& failure) {
        FailToOpen(path, failure.GetSystemMessage());
    }
}

/// Without it twenty processes that log at once wait for seconds. Where it is refused (another process uses
/// the file right now, or it is read-only) everything works all the same.
void UseWriteAheadLog(CVSQLite3Database& database) {
    try {
        database.ExecuteUpdateQuery("PRAGMA journal_mode=WAL;");
    } catch (const CVDBexception&) {
    }
}

}  // namespace

CVLogSQLiteProcessor::CVLogSQLiteProcessor(const std::string& path, bool create,
                                           CVSQLite3Database::BusyWait busyWait)
    : database_(OpenDatabase(path, create)), tables_(*database_) {
    AsFatal([&] {
        if (busyWait) database_->SetBusyWait(std::move(busyWait));
        if (create) UseWriteAheadLog(*database_);
        database_->SetSynchronous(1);
        if (create) tables_.CreateMetatable();
        if (create || database_->TableExists(kLogMetatable)) tables_.Reload();
    });
}

bool CVLogSQLiteProcessor::Insert(const std::string& module, const LogRecord& record) {
    return InsertBy(&CVLogSQLiteProcessor::StoreBound, module, record);
}

bool CVLogSQLiteProcessor::InsertAsText(const std::string& module, const LogRecord& record) {
    return InsertBy(&CVLogSQLiteProcessor::StoreAsText, module, record);
}

bool CVLogSQLiteProcessor::InsertBy(Store store, const std::string& module, const LogRecord& record) {
    if (module.empty()) return false;
    process_.Claim([this] { inserts_.clear(); });
    return AsFatal([&] {
        if (tables_.Find(module) == nullptr) inserts_.clear();
        const std::string table = tables_.FindOrCreate(module);
        try {
            (this->*store)(table, record);
        } catch (const CVDBexception&) {
            // A tool may have dropped the table while this process held its name.
            inserts_.clear();
            if (database_->TableExists(table)) throw;
            (this->*store)(tables_.CreateAgain(module), record);
        }
        return true;
    });
}

void CVLogSQLiteProcessor::StoreBound(const std::string& table, const LogRecord& record) {
    auto insert = inserts_.find(table);
    if (insert == inserts_.end()) {
        insert = inserts_.try_emplace(table, *database_, InsertLogRecord(table)).first;
    }
    insert->second.BindText(1, record.module)
        .BindInt64(2, record.timestamp)
        .BindInt(3, record.level)
        .BindText(4, record.message)
        .BindInt(5, record.line)
        .BindText(6, record.sourceFile)
        .Run();
}

void CVLogSQLiteProcessor::StoreAsText(const std::string& table, const LogRecord& record) {
    if (!database_->ExecuteUpdateQuery(InsertLogRecordAsText(table, record))) {
        throw CVDBProcessorFatalException("database is not open");
    }
}

std::string CVLogSQLiteProcessor::TableOf(const std::string& module) {
    if (tables_.Find(module) == nullptr) tables_.Reload();
    const std::string* table = tables_.Find(module);
    if (table == nullptr) throw CVDBProcessorFatalException("Module [" + module + "] has no table.");
    return *table;
}

std::unique_ptr<CVDBiResultSet> CVLogSQLiteProcessor::Select(const std::string& sql) {
    auto result = std::make_unique<CVSQLite3ResultSet>();
    if (!database_->ExecuteSelectQuery(sql, *result)) {
        throw CVDBProcessorFatalException("database is not open");
    }
    return result;
}

std::unique_ptr<CVDBiResultSet> CVLogSQLiteProcessor::Query(const std::string& module,
                                                            const LogFilter& filter) {
    return AsFatal([&] { return Select(SelectLogEntries(TableOf(module), filter)); });
}

std::unique_ptr<CVDBiResultSet> CVLogSQLiteProcessor::CountQuery(const std::string& module,
                                                                 const LogCountFilter& filter) {
    return AsFatal([&] { return Select(CountLogEntries(TableOf(module), filter)); });
}

std::vector<std::string> CVLogSQLiteProcessor::Modules() {
    AsFatal([&] {
        if (database_->TableExists(kLogMetatable)) tables_.Reload();
    });
    std::vector<std::string> modules;
    for (const auto& [module, table] : tables_.All()) modules.push_back(module);
    return modules;
}

bool CVLogSQLiteProcessor::Truncate() {
    inserts_.clear();
    return AsFatal([&] {
        tables_.Reload();
        for (const auto& [module, table] : tables_.All()) {
            // A row whose table somebody dropped by hand must not keep the others full.
            if (database_->TableExists(table)) database_->ExecuteUpdateQuery(EmptyLogTable(table));
        }
        return true;
    });
}

bool CVLogSQLiteProcessor::Drop(const std::string& module) {
    inserts_.clear();
    return AsFatal([&] {
        tables_.Drop(module, TableOf(module));
        return true;
    });
}
