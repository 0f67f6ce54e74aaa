#include "cvdblib/sqlite3/src/SqliteConnection.h"

#include <pthread.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <atomic>
#include <utility>

#include "CVconThread.h"
#include "NoCancellation.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"

namespace quorbel {

namespace {

// SQLite keeps one record for each file of a process: which locks its connections hold there. A child process
// inherits the records, not the locks. So that its own connections get records of their own, the device
// number by which SQLite finds them is changed there.
std::atomic<dev_t> deviceMark{0};

int MarkDevice(int result, struct stat* status) {
    if (result == 0) status->st_dev ^= deviceMark;
    return result;
}

int MarkedStat(const char* path, struct stat* status) {
    return MarkDevice(stat(path, status), status);
}

int MarkedFstat(int descriptor, struct stat* status) {
    return MarkDevice(fstat(descriptor, status), status);
}

void LeaveRecordsOfParent(pid_t self) {
    constexpr int kHalf = 32;
    deviceMark = static_cast<dev_t>(self) << kHalf;
    sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
    system->xSetSystemCall(system, "stat", reinterpret_cast<sqlite3_syscall_ptr>(MarkedStat));
    system->xSetSystemCall(system, "fstat", reinterpret_cast<sqlite3_syscall_ptr>(MarkedFstat));
}

// The library's own locks in the order in which it takes them: the generator of random numbers, for one, asks for the
// file layer while it holds its own. Held over a fork, none is left taken in the child by a thread that does not run
// there.
constexpr int kLibraryLocks[] = {SQLITE_MUTEX_STATIC_OPEN, SQLITE_MUTEX_STATIC_VFS1, SQLITE_MUTEX_STATIC_VFS2,
                                 SQLITE_MUTEX_STATIC_VFS3, SQLITE_MUTEX_STATIC_PRNG, SQLITE_MUTEX_STATIC_MAIN,
                                 SQLITE_MUTEX_STATIC_LRU,  SQLITE_MUTEX_STATIC_PMEM, SQLITE_MUTEX_STATIC_MEM};

void BeforeFork() {
    for (const int lock : kLibraryLocks) sqlite3_mutex_enter(sqlite3_mutex_alloc(lock));
}

void AfterFork() {
    for (const int lock : kLibraryLocks) sqlite3_mutex_leave(sqlite3_mutex_alloc(lock));
}

/// Before each opening.
void PrepareForForks() {
    static const int registered = (sqlite3_initialize(), pthread_atfork(BeforeFork, AfterFork, AfterFork));
    static std::atomic<pid_t> process{OwnProcess()};
    const pid_t self = OwnProcess();
    if (registered == 0 && process.exchange(self) != self) LeaveRecordsOfParent(self);
}

/// The name of SQLite's own file layer, but for one thing: a thread whose end was asked for does not sleep while
/// it waits for other connections. SQLite then uses up its tries at once and answers that the database is busy.
const char* FilesWithoutSleepForKilledThreads() {
    static sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs ours = [] {
        sqlite3_vfs files = *system;
        files.pNext = nullptr;
        files.zName = "quorbel";
        files.xSleep = [](sqlite3_vfs*, int microseconds) {
            return CVconThread::KillRequested() ? microseconds : system->xSleep(system, microseconds);
        };
        return files;
    }();
    static const int registered = sqlite3_vfs_register(&ours, 0);
    return registered == SQLITE_OK ? ours.zName : nullptr;
}

}  // namespace

void SqliteConnection::Fail(int line, std::string message) const {
    throw CVDBexception(error_.code, "CVSQLite3Database", line, std::move(message), error_.text);
}

int SqliteConnection::Note(int code) {
    if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) {
        error_ = {code, handle_ != nullptr ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code)};
    }
    return code;
}

int SqliteConnection::NoteText(int code, char* text) {
    if (code != SQLITE_OK) error_ = {code, text != nullptr ? text : sqlite3_errstr(code)};
    sqlite3_free(text);
    return code;
}

int SqliteConnection::Open() {
    const NoCancellation shield;
    PrepareForForks();
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path_.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                                     FilesWithoutSleepForKilledThreads());
    handle_.reset(handle);  // a failed open hands out a connection too, which knows the error's text
    Note(code);
    if (code == SQLITE_OK) {
        sqlite3_extended_result_codes(handle, 1);
    } else {
        handle_.reset();
    }
    return code;
}

void SqliteConnection::Abandon() {
    process_.Claim([this] { static_cast<void>(handle_.release()); });
}

int SqliteConnection::Close() {
    const NoCancellation shield;
    const int code = Note(sqlite3_close(handle_.get()));
    if (code == SQLITE_OK) static_cast<void>(handle_.release());
    return code;
}

void SqliteConnection::CloseHandle::operator()(sqlite3* handle) const noexcept {
    const NoCancellation shield;
    sqlite3_close_v2(handle);
}

void SqliteConnection::SetBusyTimeout(int milliseconds) {
    sqlite3_busy_timeout(handle_.get(), milliseconds);
}

void SqliteConnection::SetBusyHandler(int (*wait)(void*, int), void* argument) {
    sqlite3_busy_handler(handle_.get(), wait, argument);
}

bool SqliteConnection::IsAutoCommit() const {
    return sqlite3_get_autocommit(handle_.get()) != 0;
}

int SqliteConnection::AddFunction(const std::string& name,
                                  void (*function)(sqlite3_context*, int, sqlite3_value**), int argumentCount,
                                  int encoding) {
    const NoCancellation shield;
    return Note(sqlite3_create_function(handle_.get(), name.c_str(), argumentCount, encoding, nullptr,
                                        function, nullptr, nullptr));
}

int SqliteConnection::Execute(const std::string& sql, RowCallback onRow, void* argument) {
    const NoCancellation shield;
    char* text = nullptr;
    const int code = sqlite3_exec(handle_.get(), sql.c_str(), onRow, argument, &text);
    return NoteText(code, text);
}

int SqliteConnection::Select(const std::string& sql, CVSQLite3ResultSet& result) {
    const NoCancellation shield;
    char** table = nullptr;
    char* text = nullptr;
    int rows = 0;
    int columns = 0;
    const int code = sqlite3_get_table(handle_.get(), sql.c_str(), &table, &rows, &columns, &text);
    if (code == SQLITE_OK) result.TakeTable(table, rows, columns);
    return NoteText(code, text);
}

int SqliteConnection::ChangedRows() const {
    return sqlite3_changes(handle_.get());
}

std::int64_t SqliteConnection::LastRowId() const {
    return sqlite3_last_insert_rowid(handle_.get());
}

int SqliteConnection::Prepare(const std::string& sql, Statement& statement) {
    const NoCancellation shield;
    sqlite3_stmt* prepared = nullptr;
    const int code = Note(sqlite3_prepare_v2(handle_.get(), sql.c_str(), -1, &prepared, nullptr));
    statement.reset(prepared);
    return code;
}

void SqliteConnection::Finalize::operator()(sqlite3_stmt* statement) const noexcept {
    const NoCancellation shield;
    if (process == OwnProcess()) sqlite3_finalize(statement);
}

}  // namespace quorbel
