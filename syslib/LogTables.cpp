#include "syslib/LogTables.h"

#include <algorithm>
#include <utility>

#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "syslib/LogStatements.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

bool IsTaken(const LogTables::Map& tables, const std::string& name) {
    // SQL does not tell names apart by case.
    return std::any_of(tables.begin(), tables.end(),
                       [&](const auto& entry) { return EqualNoCase(entry.second, name); });
}

/// Two modules can ask for the same name: "SOAP" and "soap" do.
std::string UnusedTableName(const LogTables::Map& tables, const std::string& module) {
    const std::string base = LogTableName(module);
    std::string name = base;
    for (int number = 2; IsTaken(tables, name); ++number) name = base + "_" + std::to_string(number);
    return name;
}

void Require(bool succeeded, const CVSQLite3Database& database) {
    if (!succeeded) throw CVDBProcessorFatalException(database.GetLastErrorMessage());
}

/// A table of that name belongs to no module; mostly there is none, and that failure ends no transaction.
void DropLeftOver(CVSQLite3Database& database, const std::string& table) {
    try {
        database.ExecuteUpdateQuery(DropLogTable(table));
    } catch (const CVDBexception&) {
    }
}

}  // namespace

void LogTables::CreateMetatable() {
    const auto create = [this] {
        return database_.TableExists(kLogMetatable) || database_.ExecuteUpdateQuery(kCreateLogMetatable);
    };
    Require(database_.TableExists(kLogMetatable) ||
                database_.InTransaction(TransactionKind::Immediate, kTryOnce, create),
            database_);
}

LogTables::Map LogTables::Read() {
    CVSQLite3ResultSet rows;
    Require(database_.ExecuteSelectQuery(kSelectLogModules, rows), database_);
    Map tables;
    for (int row = 0; row < rows.GetRowCount(); ++row) {
        const char* module = rows.GetCell(row, 0);
        const char* table = rows.GetCell(row, 1);
        // A row that could bend a statement is no row of ours.
        if (module != nullptr && table != nullptr && IsLogTableName(table)) tables.emplace(module, table);
    }
    return tables;
}

const std::string* LogTables::Find(const std::string& module) const {
    const auto found = tables_.find(module);
    return found != tables_.end() ? &found->second : nullptr;
}

const std::string& LogTables::FindOrCreate(const std::string& module) {
    if (tables_.find(module) == tables_.end()) Create(module);
    return tables_.at(module);
}

const std::string& LogTables::CreateAgain(const std::string& module) {
    Create(module);
    return tables_.at(module);
}

void LogTables::Create(const std::string& module) {
    Map tables;
    std::string table = LogTableName(module);
    std::string error;
    try {
        if (database_.InTransaction(TransactionKind::Immediate, kTryOnce,
                                    [&] { return CreateInTransaction(module, tables, table); })) {
            tables_ = std::move(tables);
            return;
        }
        error = database_.GetLastErrorMessage();
    } catch (const CVDBexception& failure) {
        error = failure.GetSystemMessage();
    }
    throw CVDBProcessorFatalException("Unable to create module [" + module + "] table [" + table + "]. " +
                                      error);
}

bool LogTables::CreateInTransaction(const std::string& module, Map& tables, std::string& table) {
    tables = Read();
    if (const auto known = tables.find(module); known != tables.end()) {
        // Another process was quicker; its table holds entries already and must not be dropped.
        table = known->second;
        return database_.TableExists(table) || database_.ExecuteUpdateQuery(CreateLogTable(table));
    }
    table = UnusedTableName(tables, module);
    tables.emplace(module, table);
    DropLeftOver(database_, table);
    return database_.ExecuteUpdateQuery(CreateLogTable(table)) &&
           database_.ExecuteUpdateQuery(RecordLogModule(module, table));
}

void LogTables::Drop(const std::string& module, const std::string& table) {
    const auto drop = [&] {
        return (!database_.TableExists(table) || database_.ExecuteUpdateQuery(DropLogTable(table))) &&
               database_.ExecuteUpdateQuery(ForgetLogModule(module));
    };
    Require(database_.InTransaction(TransactionKind::Immediate, kTryOnce, drop), database_);
    tables_.erase(module);
}

}  // namespace quorbel
