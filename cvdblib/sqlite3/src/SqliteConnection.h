#pragma once

#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>

#include "ProcessMark.h"

class CVSQLite3ResultSet;
struct sqlite3;
struct sqlite3_context;
struct sqlite3_stmt;
struct sqlite3_value;

namespace quorbel {

/// SQLite's result code and text of a failed call; 0 and empty for none.
struct SqliteError {
    int code = 0;
    std::string text;
};

/// Whether an SQLite result code counts as "busy, worth another attempt".
///
/// Kept for compatibility: the masks are wider than SQLite's own busy codes. Any code whose low four bits are
/// 5, 6, 7, 10, 11, 13, 14 or 15 passes, so that a file that cannot be opened (14) or read (10) is tried
/// again as well.
constexpr bool CountsAsBusy(int code) {
    return (code & 5) == 5 || (code & 6) == 6 || (code & 10) == 10;
}

/// One connection as SQLite has it, with the error of the last call that failed.
///
/// The calls answer SQLite's result code, 0 for success; all but Open, Close and IsOpen need an open
/// connection. None of them can be left by the end of its thread: SQLite would keep its locks.
///
/// A connection must not be used in another process than the one that opened it, nor closed there: SQLite
/// forbids both. Such a process calls Abandon first.
class SqliteConnection {
public:
    explicit SqliteConnection(std::string path) : path_(std::move(path)) {}
    ~SqliteConnection() { Abandon(); }

    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;

    const std::string& Path() const { return path_; }
    const SqliteError& Error() const { return error_; }
    void SetError(SqliteError error) { error_ = std::move(error); }
    /// Throws the last error as a CVDBexception of the unit CVSQLite3Database.
    [[noreturn]] void Fail(int line, std::string message) const;

    int Open();
    int Close();
    bool IsOpen() const { return handle_ != nullptr; }
    bool IsOurs() const { return process_.IsOurs(); }
    /// Forgets the parent's connection without touching it.
    void Abandon();

    void SetBusyTimeout(int milliseconds);
    /// `wait` is asked instead, with how often it was asked for this statement; it must not throw. Null: the
    /// statement fails at once.
    void SetBusyHandler(int (*wait)(void*, int), void* argument);
    bool IsAutoCommit() const;
    int AddFunction(const std::string& name, void (*function)(sqlite3_context*, int, sqlite3_value**),
                    int argumentCount, int encoding);

    using RowCallback = int (*)(void*, int, char**, char**);
    int Execute(const std::string& sql, RowCallback onRow = nullptr, void* argument = nullptr);
    int Select(const std::string& sql, CVSQLite3ResultSet& result);
    int ChangedRows() const;
    std::int64_t LastRowId() const;

    struct Finalize {
        pid_t process = OwnProcess();  // in another one the statement is abandoned
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

    int Prepare(const std::string& sql, Statement& statement);
    /// Answers `code` and notes its text when it is not one of success.
    int Note(int code);

private:
    struct CloseHandle {
        void operator()(sqlite3* handle) const noexcept;
    };

    int NoteText(int code, char* text);

    std::string path_;
    ProcessMark process_;
    std::unique_ptr<sqlite3, CloseHandle> handle_;  // null while closed
    SqliteError error_;
};

}  // namespace quorbel
