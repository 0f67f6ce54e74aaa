#pragma once

#include <cstdint>
#include <memory>
#include <string>

class CVSQLite3Database;

namespace quorbel {

/// An SQL statement whose values are bound to its "?" by position, counted from 1; no text of a value can
/// change what the statement does.
///
/// Must end before its database is closed, and is of no use in a child process. Failures throw CVDBexception with SQLite's text.
class PreparedStatement {
public:
    PreparedStatement(CVSQLite3Database& database, const std::string& sql);
    ~PreparedStatement();

    PreparedStatement(const PreparedStatement&) = delete;
    PreparedStatement& operator=(const PreparedStatement&) = delete;

    /// The text is copied, up to its first zero byte.
    PreparedStatement& BindText(int position, const std::string& text);
    PreparedStatement& BindInt(int position, int value);
    PreparedStatement& BindInt64(int position, std::int64_t value);

    /// To the end of a statement that returns no rows; it may then be bound and run again.
    void Run();

private:
    struct State;

    void Check(int code, int line, const char* step);

    std::unique_ptr<State> state_;
};

}  // namespace quorbel
