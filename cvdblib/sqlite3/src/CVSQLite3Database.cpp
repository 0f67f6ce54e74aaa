#include "cvdblib/sqlite3/src/CVSQLite3Database.h"

#include <sqlite3.h>

#include <thread>
#include <utility>

#include "cvdblib/sqlite3/src/BusyCode.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"

using namespace quorbel;

namespace {

using std::chrono::milliseconds;

constexpr int kAttempts = 50;
constexpr milliseconds kPause{500};
constexpr int kBusyTimeoutMs = 60000;

void SleepFor(milliseconds time) {
    std::this_thread::sleep_for(time);
}

}  // namespace

void CVSQLite3Database::CloseConnection::operator()(sqlite3* connection) const noexcept {
    sqlite3_close_v2(connection);
}

CVSQLite3Database::CVSQLite3Database(std::string path, Sleep sleep)
    : path_(std::move(path)), sleep_(sleep ? std::move(sleep) : SleepFor) {
    if (!Open(false)) Fail(__LINE__, "Unable to open DB [" + path_ + "]");
    if (!Initialize(false)) Fail(__LINE__, "Unable to initialize DB.");
}

CVSQLite3Database::CVSQLite3Database(std::string path, const TableDescription& table, Sleep sleep)
    : CVSQLite3Database(std::move(path), std::move(sleep)) {
    if (!TableExists(table.name) && !CreateMissing(table)) Fail(__LINE__, "Unable to set DB schema.");
}

void CVSQLite3Database::Fail(int line, std::string message) const {
    throw CVDBexception(lastError_.code, "CVSQLite3Database", line, std::move(message), lastError_.text);
}

void CVSQLite3Database::NoteError(int code) {
    lastError_ = {code, handle_ != nullptr ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code)};
}

bool CVSQLite3Database::RetryWhileBusy(int (CVSQLite3Database::*attempt)()) {
    for (int left = kAttempts;;) {
        const int code = (this->*attempt)();
        if (code == SQLITE_OK) ClearError();
        if (!CountsAsBusy(code) || --left == 0) return code == SQLITE_OK;
        sleep_(kPause);
    }
}

bool CVSQLite3Database::Open(bool exclusiveUse) {
    ClearError();
    if (handle_ != nullptr) return true;
    if (!RetryWhileBusy(&CVSQLite3Database::TryOpen)) return false;
    exclusiveUse_ = exclusiveUse;
    sqlite3_extended_result_codes(handle_.get(), 1);
    return true;
}

int CVSQLite3Database::TryOpen() {
    sqlite3* connection = nullptr;
    const int code = sqlite3_open(path_.c_str(), &connection);
    handle_.reset(connection);  // a failed open hands out a connection too, which knows the error's text
    if (code != SQLITE_OK) {
        NoteError(code);
        handle_.reset();
    }
    return code;
}

bool CVSQLite3Database::Close() {
    ClearError();
    if (handle_ == nullptr || !RetryWhileBusy(&CVSQLite3Database::TryClose)) return false;
    ready_ = false;
    inTransaction_ = false;
    return true;
}

int CVSQLite3Database::TryClose() {
    const int code = sqlite3_close(handle_.get());
    if (code == SQLITE_OK) {
        static_cast<void>(handle_.release());
    } else {
        NoteError(code);
    }
    return code;
}

bool CVSQLite3Database::Initialize(bool force) {
    ClearError();
    if (handle_ == nullptr) return false;
    // The probe runs before the time-out is set: a locked file passes it, so there is nothing to wait for.
    ready_ = force || Probe();
    sqlite3_busy_timeout(handle_.get(), kBusyTimeoutMs);
    return ready_;
}

bool CVSQLite3Database::Probe() {
    CVSQLite3ResultSet names;
    if (GetTable("SELECT name FROM sqlite_master LIMIT 1;", names)) return true;
    if ((lastError_.code & 0xFF) != SQLITE_BUSY) return false;
    ClearError();
    return true;
}

void CVSQLite3Database::Reopen() {
    Close();
    if (!Open(false)) Fail(__LINE__, "Unable to open DB [" + path_ + "]");
    if (!Initialize(true)) Fail(__LINE__, "Unable to initialize DB.");
}

bool CVSQLite3Database::IsOpen() {
    ClearError();
    return handle_ != nullptr;
}

bool CVSQLite3Database::IsReady() {
    ClearError();
    return CanRunStatements();
}

bool CVSQLite3Database::IsAutoCommit() {
    ClearError();
    return handle_ != nullptr && sqlite3_get_autocommit(handle_.get()) != 0;
}
