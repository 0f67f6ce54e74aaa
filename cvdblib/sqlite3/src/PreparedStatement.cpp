#include "cvdblib/sqlite3/src/PreparedStatement.h"

#include <sqlite3.h>

#include "NoCancellation.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/SqliteConnection.h"

namespace quorbel {

struct PreparedStatement::State {
    SqliteConnection& connection;
    std::string sql;
    SqliteConnection::Statement statement;
};

PreparedStatement::PreparedStatement(CVSQLite3Database& database, const std::string& sql)
    : state_(new State{database.Connection(), sql, nullptr}) {
    if (!database.IsReady()) {  // which forgets the last error, too
        state_->connection.SetError({SQLITE_MISUSE, "database is not open"});
        state_->connection.Fail(__LINE__, "Unable to prepare query [" + sql + "].");
    }
    Check(state_->connection.Prepare(sql, state_->statement), __LINE__, "prepare");
}

PreparedStatement::~PreparedStatement() = default;

void PreparedStatement::Check(int code, int line, const char* step) {
    if (code == SQLITE_OK || code == SQLITE_DONE || code == SQLITE_ROW) return;
    state_->connection.Fail(line, std::string("Unable to ") + step + " query [" + state_->sql + "].");
}

PreparedStatement& PreparedStatement::BindText(int position, const std::string& text) {
    const int code = sqlite3_bind_text(state_->statement.get(), position, text.c_str(), -1, SQLITE_TRANSIENT);
    Check(state_->connection.Note(code), __LINE__, "bind");
    return *this;
}

PreparedStatement& PreparedStatement::BindInt(int position, int value) {
    return BindInt64(position, value);
}

PreparedStatement& PreparedStatement::BindInt64(int position, std::int64_t value) {
    const int code = sqlite3_bind_int64(state_->statement.get(), position, value);
    Check(state_->connection.Note(code), __LINE__, "bind");
    return *this;
}

void PreparedStatement::Run() {
    const NoCancellation shield;
    state_->connection.SetError({});
    if (state_->statement.get_deleter().process != OwnProcess()) {
        state_->connection.SetError({SQLITE_MISUSE, "statement of another process"});
        Check(SQLITE_MISUSE, __LINE__, "run");
    }
    const int code = state_->connection.Note(sqlite3_step(state_->statement.get()));
    sqlite3_reset(state_->statement.get());
    Check(code, __LINE__, "run");
}

}  // namespace quorbel
