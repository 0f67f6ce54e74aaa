#include <sqlite3.h>

#include <algorithm>
#include <memory>

#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"

using namespace quorbel;

namespace {

struct FreeText {
    void operator()(char* text) const noexcept { sqlite3_free(text); }
};

}  // namespace

bool CVSQLite3Database::CreateFunction(const std::string& name, SqlFunction function, int argumentCount,
                                       int encoding) {
    ClearError();
    if (handle_ == nullptr || name.empty() || function == nullptr) return false;
    const int code = sqlite3_create_function(handle_.get(), name.c_str(), argumentCount, encoding, nullptr,
                                             function, nullptr, nullptr);
    if (code != SQLITE_OK) NoteError(code);
    return code == SQLITE_OK;
}

int CVSQLite3Database::ExecuteUpdateQueryCallback(void* counter, int, char**, char**) noexcept {
    ++*static_cast<int*>(counter);
    return 0;
}

void CVSQLite3Database::Update(int line, const std::string& sql, int* returnedRows) {
    char* text = nullptr;
    const int code =
        sqlite3_exec(handle_.get(), sql.c_str(),
                     returnedRows != nullptr ? ExecuteUpdateQueryCallback : nullptr, returnedRows, &text);
    const std::unique_ptr<char, FreeText> owner(text);
    if (code == SQLITE_OK) return;
    lastError_ = {code, text != nullptr ? text : sqlite3_errstr(code)};
    Fail(line, "Unable to execute UPDATE query [" + sql + "].");
}

bool CVSQLite3Database::ExecuteUpdateQuery(const std::string& sql) {
    ClearError();
    if (!CanRunStatements()) return false;
    Update(__LINE__, sql, nullptr);
    return true;
}

bool CVSQLite3Database::ExecuteUpdateQuery(const std::string& sql, CVSQLite3ResultSet& result,
                                           std::int64_t& lastRowId) {
    ClearError();
    if (!CanRunStatements()) return false;
    Update(__LINE__, sql, nullptr);
    result.SetAffectedRows(sqlite3_changes(handle_.get()));
    lastRowId = std::max<std::int64_t>(0, sqlite3_last_insert_rowid(handle_.get()));
    return true;
}

bool CVSQLite3Database::ExecuteUpdateQuery(const std::string& sql, int& returnedRows, int& affectedRows) {
    ClearError();
    if (!CanRunStatements()) return false;
    returnedRows = 0;
    Update(__LINE__, sql, &returnedRows);
    affectedRows = sqlite3_changes(handle_.get());
    return true;
}

bool CVSQLite3Database::GetTable(const std::string& sql, CVSQLite3ResultSet& result) {
    char** table = nullptr;
    char* text = nullptr;
    int rows = 0;
    int columns = 0;
    const int code = sqlite3_get_table(handle_.get(), sql.c_str(), &table, &rows, &columns, &text);
    const std::unique_ptr<char, FreeText> owner(text);
    if (code == SQLITE_OK) {
        result.TakeTable(table, rows, columns);
    } else {
        lastError_ = {code, text != nullptr ? text : sqlite3_errstr(code)};
    }
    return code == SQLITE_OK;
}

bool CVSQLite3Database::ExecuteSelectQuery(const std::string& sql, CVSQLite3ResultSet& result) {
    ClearError();
    if (!CanRunStatements()) return false;
    if (!GetTable(sql, result)) Fail(__LINE__, "Unable to execute SELECT query [" + sql + "].");
    return true;
}

bool CVSQLite3Database::TableExists(const std::string& name) {
    ClearError();
    if (handle_ == nullptr) return false;
    CVSQLite3ResultSet names;
    const std::string sql =
        "SELECT name FROM sqlite_master WHERE type='table' AND name='" + DoubleQuotes(name) + "';";
    if (!GetTable(sql, names)) Fail(__LINE__, "Unable to check table '" + name + "' existance");
    return names.GetRowCount() > 0;
}

bool CVSQLite3Database::SetSchema(const TableDescription& table) {
    ClearError();
    if (handle_ == nullptr) return false;
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
        return ExecuteUpdateQuery("PRAGMA synchronous=" + std::to_string(level) + ";") &&
               lastError_.code == SQLITE_OK;
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
