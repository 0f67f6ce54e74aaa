#include "cvdblib/sqlite3/src/PreparedStatement.h"

#include <sqlite3.h>

#include "cvdblib/sqlite3/src/CVSQLite3Database.h"

namespace quorbel {

void PreparedStatement::Finalize::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

PreparedStatement::PreparedStatement(CVSQLite3Database& database, const std::string& sql)
    : database_(database), sql_(sql) {
    database_.ClearError();
    if (!database_.CanRunStatements()) {
        database_.lastError_ = {SQLITE_MISUSE, "database is not open"};
        database_.Fail(__LINE__, "Unable to prepare query [" + sql_ + "].");
    }
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(database_.handle_.get(), sql.c_str(), -1, &statement, nullptr);
    statement_.reset(statement);
    Check(code == SQLITE_OK, code, __LINE__, "prepare");
}

void PreparedStatement::Check(bool succeeded, int code, int line, const char* step) {
    if (succeeded) return;
    database_.NoteError(code);
    database_.Fail(line, std::string("Unable to ") + step + " query [" + sql_ + "].");
}

PreparedStatement& PreparedStatement::BindText(int position, const std::string& text) {
    const int code = sqlite3_bind_text(statement_.get(), position, text.c_str(), -1, SQLITE_TRANSIENT);
    Check(code == SQLITE_OK, code, __LINE__, "bind");
    return *this;
}

PreparedStatement& PreparedStatement::BindInt(int position, int value) {
    const int code = sqlite3_bind_int(statement_.get(), position, value);
    Check(code == SQLITE_OK, code, __LINE__, "bind");
    return *this;
}

PreparedStatement& PreparedStatement::BindInt64(int position, std::int64_t value) {
    const int code = sqlite3_bind_int64(statement_.get(), position, value);
    Check(code == SQLITE_OK, code, __LINE__, "bind");
    return *this;
}

void PreparedStatement::Run() {
    database_.ClearError();
    const int code = sqlite3_step(statement_.get());
    Check(code == SQLITE_DONE || code == SQLITE_ROW, code, __LINE__, "run");
}

}  // namespace quorbel
