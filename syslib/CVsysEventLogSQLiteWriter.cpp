#include "syslib/CVsysEventLogSQLiteWriter.h"

#include <cxxabi.h>

#include <cstdlib>
#include <utility>

#include "cvdblib/sqlite3/src/DatabaseFile.h"
#include "syslib/CVDBProcessorFatalException.h"
#include "syslib/EventLevel.h"
#include "syslib/LogReport.h"
#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

unsigned StoredLevel(unsigned level) {
    return level <= static_cast<unsigned>(EventLevel::Fatal) ? level : 0;
}

// SQLite would spend 25 s on such a path, at every start of the program.
void RequireUsable(const std::string& path) {
    if (IsWritableDatabase(path)) return;
    throw CVDBProcessorFatalException("Unable to open log database [" + path +
                                      "]. It must be a file, in a directory that takes new files, that can "
                                      "be read and written.");
}

}  // namespace

CVsysEventLogSQLiteWriter::CVsysEventLogSQLiteWriter(std::string identity) : identity_(std::move(identity)) {}

template <class Action>
bool CVsysEventLogSQLiteWriter::Guarded(const Operation& operation, Action action) {
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

bool CVsysEventLogSQLiteWriter::setDbFileName(const std::string& name) {
    processor_.reset();
    return Guarded(
        {"CVsysEventLogSQLiteWriter::setDbFileName", "Unable to initialize sqlite writer. Unknown error."},
        [&] {
            RequireUsable(name);
            processor_ = std::make_unique<CVLogSQLiteProcessor>(name, true);
            return true;
        });
}

bool CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag(bool truncate) {
    if (!truncate || processor_ == nullptr) return false;
    return Guarded({"CVsysEventLogSQLiteWriter::setMakeDbTruncateFlag",
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
    const bool stored =
        Guarded({"CVsysEventLogSQLiteWriter::operator()", "Unable to write log entry. Unknown error."}, [&] {
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
