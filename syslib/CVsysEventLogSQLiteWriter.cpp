#include "syslib/CVsysEventLogSQLiteWriter.h"

#include <cxxabi.h>

#include <cstdlib>
#include <fstream>
#include <utility>

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

// Anything but an empty file and one that begins as SQLite's do.
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
bool CVsysEventLogSQLiteWriter::Reporting(const Operation& operation, Action action) {
    try {
        return action();
    } catch (const abi::__forced_unwind&) {
        throw;  // a thread's forced end is no error
    } catch (const CVDBProcessorFatalException& failure) {
        ReportLogFailure(operation.source, identity_, failure.what());
    } catch (...) {
        ReportLogFailure(operation.source, identity_, operation.unknown);
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
    notReady_ = WhyNoDatabase(name);
    if (mode_ == WriterMode::Look) return notReady_.empty();
    return Reporting(
        {"CVsysEventLogSQLiteWriter::setDbFileName", "Unable to initialize sqlite writer. Unknown error."},
        [&] {
            RequireUsable(name);
            notReady_ = name + ": cannot be opened";
            processor_ = std::make_unique<CVLogSQLiteProcessor>(name, true);
            notReady_.clear();
            return true;
        });
}

bool CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag(bool truncate) {
    if (!truncate || processor_ == nullptr) return false;
    return Reporting({"CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag",
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
        {"CVsysEventLogSQLiteWriter::operator()", "Unable to write log entry. Unknown error."}, [&] {
            const auto dot = module.find('.');
            const LogRecord record{
                .module = dot != std::string::npos ? module.substr(dot + 1) : "",
                .timestamp = time != 0 ? time : std::time(nullptr),
                .level = static_cast<int>(StoredLevel(level)),
                .message = message,
                .line = extra,
                .sourceFile = userText != nullptr ? userText : "",
            };
            return processor_->Insert(module.substr(0, dot), record);
        });
    return stored ? 1 : 0;
}
