#include "syslib/CVsysEventLogSQLiteWriter.h"

#include <cxxabi.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <utility>

#include "CVException.h"
#include "CVconThread.h"
#include "LockFile.h"
#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "syslib/LogLevel.h"
#include "syslib/LogPaths.h"
#include "syslib/LogReport.h"
#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

unsigned StoredLevel(unsigned level) {
    return level <= static_cast<unsigned>(LogLevel::Fatal) ? level : 0;
}

// Anything but an empty file and one that begins as SQLite's do. Never while the database is open: closing the
// file would drop SQLite's locks on it.
bool IsForeign(const std::string& path) {
    constexpr char kStart[] = "SQLite format 3";  // its zero byte is part of it
    std::string start(sizeof kStart, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return file.gcount() > 0 && start != std::string(kStart, sizeof kStart);
}

std::string WhyNoDatabase(const std::string& path) {
    if (path.empty()) return "there is no dbfilename";
    if (IsWritableDatabase(path)) return IsForeign(path) ? path + ": is not a database" : "";
    const std::string refusal = WhyNotWritable(path);
    return refusal.empty() ? path + ": is no file" : refusal;
}

constexpr std::pair<dev_t, ino_t> kNoFile{};

std::pair<dev_t, ino_t> IdOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? std::pair(status.st_dev, status.st_ino) : kNoFile;
}

// Programs may still have a removed database open. Its "-shm" is theirs: whoever took it into the new one might
// drop their locks on it, and cut it short under their eyes. It is unlinked, and so stays what it is for them.
void RemoveLeftOvers(const std::string& path) {
    for (const char* end : {"-wal", "-shm"}) unlink((path + end).c_str());
}

// SQLite would spend 25 s on such a path, at every start of the program.
void RequireUsable(const std::string& path) {
    if (IsWritableDatabase(path)) return;
    throw CVDBProcessorFatalException("Unable to open log database [" + path +
                                      "]. It must be a file, in a directory that takes new files, that can "
                                      "be read and written.");
}

}  // namespace

CVsysEventLogSQLiteWriter::CVsysEventLogSQLiteWriter(std::string identity, WriterMode mode)
    : identity_(std::move(identity)), mode_(mode) {}

template <class Action>
bool CVsysEventLogSQLiteWriter::Reporting(const std::string& identity, const Operation& operation,
                                          Action action) {
    try {
        return action();
    } catch (const abi::__forced_unwind&) {
        throw;  // a thread's forced end is no error
    } catch (const CVDBProcessorFatalException& failure) {
        ReportLogFailure(operation.source, identity, failure.what());
    } catch (const CVException& failure) {
        ReportLogFailure(operation.source, identity, failure.ToString());
    } catch (...) {
        ReportLogFailure(operation.source, identity, operation.unknown);
    }
    return false;
}

bool CVsysEventLogSQLiteWriter::setProperty(const std::string& key, const std::string& value) {
    if (EqualNoCase(key, "dbfilename") || EqualNoCase(key, "filename")) return setDbFileName(value);
    if (EqualNoCase(key, "truncate")) {
        return setMakeDbTruncateFlag(std::strtol(value.c_str(), nullptr, 10) != 0);
    }
    return true;
}

bool CVsysEventLogSQLiteWriter::isReady() {
    return processor_ != nullptr;
}

WriterDescription CVsysEventLogSQLiteWriter::Describe() const {
    return {.kind = WriterDescription::Kind::Database, .path = path_, .notReady = notReady_};
}

bool CVsysEventLogSQLiteWriter::setDbFileName(const std::string& name) {
    processor_.reset();
    path_ = name;
    if (mode_ == WriterMode::Look) {
        notReady_ = WhyNoDatabase(name);
        return notReady_.empty();
    }
    notReady_ = name + ": cannot be opened";
    return Reporting(
        identity_,
        {"CVsysEventLogSQLiteWriter::setDbFileName", "Unable to initialize sqlite writer. Unknown error."},
        [&] {
            BeginWaits();
            OpenAnew();
            patience_.Succeeded();
            notReady_.clear();
            return true;
        });
}

// From here on the waits of one opening, or of one entry, come out of one patience.
void CVsysEventLogSQLiteWriter::BeginWaits() {
    deadline_ = std::chrono::steady_clock::now() + patience_.Next();
    patience_.WaitedInVain();  // unless it succeeds
}

void CVsysEventLogSQLiteWriter::OpenAnew() {
    RequireUsable(path_);
    const std::string lockPath = path_ + ".lock";
    std::optional<LockFile> lock;
    // A log is worth more than its order: where there is no lock to be had, it is opened without.
    if (IsLockUsable(lockPath)) {
        lock.emplace(lockPath, LockRetry{.sleep = [this](auto time) { WaitForLock(time); }});
    }
    constexpr int kRounds = 10;
    for (int round = 0; round < kRounds; ++round) {
        const FileId before = IdOf(path_);
        // In a later round SQLite may have made the new file, beside what was left.
        if (lock && (before == kNoFile || round > 0)) RemoveLeftOvers(path_);
        if (Open(before)) return;
    }
    throw CVDBProcessorFatalException("Log database [" + path_ + "] is replaced again and again.");
}

void CVsysEventLogSQLiteWriter::WaitForLock(std::chrono::microseconds time) {
    if (std::chrono::steady_clock::now() >= deadline_) {
        throw CVDBProcessorFatalException("Another program holds [" + path_ + ".lock].");
    }
    WaitForLog(time, identity_);
}

// False when the file was replaced meanwhile: parts of two databases may be open then.
bool CVsysEventLogSQLiteWriter::Open(const FileId& before) {
    const auto replaced = [&] {
        const FileId now = IdOf(path_);
        return now == kNoFile || (before != kNoFile && before != now);
    };
    std::unique_ptr<CVLogSQLiteProcessor> opened;
    try {
        opened = std::make_unique<CVLogSQLiteProcessor>(path_, true,
                                                        [this](int asked) { return WaitWhileBusy(asked); });
    } catch (const CVDBProcessorFatalException&) {
        if (!replaced()) throw;
    }
    if (opened == nullptr || replaced()) return false;
    process_.Claim([] {});
    file_ = IdOf(path_);
    processor_ = std::move(opened);
    return true;
}

bool CVsysEventLogSQLiteWriter::IsStillThere() const {
    return file_ == IdOf(path_);
}

// SQLite's own waits grow to a tenth of a second, in which a hundred others come and go.
bool CVsysEventLogSQLiteWriter::WaitWhileBusy(int asked) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= deadline_ || CVconThread::KillRequested()) return false;
    const auto longest = std::chrono::microseconds(200) * std::min(asked + 1, 10);
    WaitForLog(longest / 2 + std::chrono::microseconds(now.time_since_epoch().count() % longest.count()),
               identity_);
    return true;
}

bool CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag(bool truncate) {
    if (!truncate || processor_ == nullptr) return false;
    return Reporting(identity_,
                     {"CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag",
                      "Unable to truncate sqlite writer module's tables. Unknown error."},
                     [&] { return processor_->Truncate(); });
}

int CVsysEventLogSQLiteWriter::DoWork(const std::string& module, unsigned level, const std::string& message,
                                      int extra, const char* userText, std::time_t time) {
    return (*this)(module, level, message, extra, userText, time);
}

int CVsysEventLogSQLiteWriter::operator()(const std::string& module, unsigned level,
                                          const std::string& message, int extra, const char* userText,
                                          std::time_t time) {
    if (!isReady()) return 0;
    const bool stored = Reporting(
        module, {"CVsysEventLogSQLiteWriter::operator()", "Unable to write log entry. Unknown error."}, [&] {
            BeginWaits();
            const auto dot = module.find('.');
            const LogRecord record{
                .module = dot != std::string::npos ? module.substr(dot + 1) : "",
                .timestamp = time != 0 ? time : std::time(nullptr),
                .level = static_cast<int>(StoredLevel(level)),
                .message = message,
                .line = extra,
                .sourceFile = userText != nullptr ? userText : "",
            };
            if (!process_.IsOurs() || !IsStillThere()) OpenAnew();
            const bool inserted = processor_->Insert(module.substr(0, dot), record);
            patience_.Succeeded();
            return inserted;
        });
    return stored ? 1 : 0;
}
