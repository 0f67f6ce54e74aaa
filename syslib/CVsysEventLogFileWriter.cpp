#include "syslib/CVsysEventLogFileWriter.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <utility>

#include "CVException.h"
#include "CVioFile.h"
#include "syslib/LogPaths.h"
#include "syslib/LogReport.h"
#include "syslib/LogText.h"
#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

using std::chrono::microseconds;

// Kept for compatibility: the first two name another class.
constexpr const char* kPathSource = "CVsysEventLogInterface::setFilePath";
constexpr const char* kPrepareSource = "CVsysEventLogInterface::loadWriterConfig";
constexpr const char* kWriteSource = "CVsysEventLogFileWriter::DoWork";
constexpr const char* kUnknown = "Unknown Error";

std::int32_t ParseNumber(const std::string& text) {
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

bool StoreNonZero(std::int32_t& setting, const std::string& value) {
    const std::int32_t number = ParseNumber(value);
    if (number != 0) setting = number;
    return number != 0;
}

}  // namespace

CVsysEventLogFileWriter::CVsysEventLogFileWriter(std::string identity, WriterMode mode,
                                                 std::function<void(microseconds)> sleep)
    : identity_(std::move(identity)), mode_(mode), wait_([this, sleep = std::move(sleep)](microseconds wait) {
          if (!sleep) return WaitForLog(wait, identity_);
          sleep(wait);
          CountLogWait(wait, identity_);
      }) {}

bool CVsysEventLogFileWriter::setProperty(const std::string& key, const std::string& value) {
    if (EqualNoCase(key, "numFiles")) return StoreNonZero(archive_.files, value);
    if (EqualNoCase(key, "bytesPerFiles")) return StoreNonZero(archive_.bytesPerFile, value);
    if (EqualNoCase(key, "filePath")) return setFilePath(value);
    if (EqualNoCase(key, "autoAppend")) autoAppend_ = true;  // "0", too: kept for compatibility
    if (EqualNoCase(key, "perProcessFile")) perProcessFile_ = ParseNumber(value) != 0;
    return true;
}

bool CVsysEventLogFileWriter::setFilePath(const std::string& value) {
    if (value.empty()) return false;
    try {
        OpenOnce(value);
        path_ = mode_ == WriterMode::Write ? AbsolutePath(value) : value;
        directory_ = LogDirectoryOf(path_);
        notReady_.clear();
        return true;
    } catch (...) {
        if (mode_ == WriterMode::Write) ReportCaughtException(kPathSource, identity_, kUnknown);
    }
    if (!path_.empty()) return false;
    refusedPath_ = value;
    notReady_ = WhyNotWritable(value);
    if (notReady_.empty()) notReady_ = value + ": cannot be opened";
    return false;
}

void CVsysEventLogFileWriter::OpenOnce(const std::string& path) const {
    const std::string refusal = WhyNotWritable(path);
    if (!refusal.empty()) {
        throw CVioException(path, "CVsysEventLogFileWriter", __LINE__, "Log file is not writable", refusal);
    }
    if (mode_ == WriterMode::Write) CVioFile(path).Open("a+");
}

void CVsysEventLogFileWriter::PrepareDirectory() {
    if (!isReady()) return;
    const std::string lock = path_ + ".lock";
    if (mode_ == WriterMode::Look) {
        notReady_ = WhyRefused(lock);
        return;
    }
    const bool usable = IsLockUsable(lock);  // first: its own file is not deleted then
    try {
        RemoveDeadLockFiles(directory_);
    } catch (...) {
        ReportCaughtException(kPrepareSource, identity_, kUnknown);
    }
    initialised_ = usable || IsLockUsable(lock);
    if (initialised_) return;
    notReady_ = "Can not lock '" + lock + "'";
    ReportLogFailure(kPrepareSource, identity_, notReady_);
}

bool CVsysEventLogFileWriter::isReady() {
    return initialised_ && archive_.bytesPerFile != 0 && archive_.files != 0 && !path_.empty();
}

WriterDescription CVsysEventLogFileWriter::Describe() const {
    const bool noPath = path_.empty() && notReady_.empty();
    return {.kind = WriterDescription::Kind::File,
            .path = path_.empty() ? refusedPath_ : path_,
            .archive = archive_,
            .perProcessFile = perProcessFile_,
            .notReady = noPath ? "there is no filePath" : notReady_};
}

int CVsysEventLogFileWriter::DoWork(const std::string& module, unsigned level, const std::string& message,
                                    int /*extra*/, const char* /*userText*/, std::time_t time) {
    if (mode_ == WriterMode::Look || !isReady()) return 0;
    try {
        Append(module, level, message, time);
        return 1;
    } catch (...) {
        ReportCaughtException(kWriteSource, module, kUnknown);
        return 0;
    }
}

void CVsysEventLogFileWriter::Append(const std::string& module, unsigned level, const std::string& message,
                                     std::time_t time) {
    const std::string target = perProcessFile_ ? TargetOf(module) : path_;
    const LockRetry retry = RetryNow();
    patience_.WaitedInVain();
    const LockFile lock(target + ".lock", retry);
    patience_.Succeeded();

    std::string line = LogLine(perProcessFile_ ? "" : module, level, SafeLogText(message), time);
    if (autoAppend_ && !message.empty() && !IsSpace(message.back())) line += '\n';
    end_.tornLine = autoAppend_ ? TornLine::StartNewLine : TornLine::Continue;
    AppendToLogFile(target, line, end_, archive_, module);
}

LockRetry CVsysEventLogFileWriter::RetryNow() const {
    constexpr std::chrono::milliseconds kPause{30};
    const auto attempts = static_cast<int>(patience_.Next() / kPause);
    if (attempts == 0) return {.attempts = 1, .pause = {}, .sleep = {}};
    return {.attempts = attempts, .pause = kPause, .sleep = std::cref(wait_)};
}

std::string CVsysEventLogFileWriter::TargetOf(const std::string& module) const {
    std::string name = module;
    for (char& c : name) {
        if (c == ' ' || c == '/') c = '_';
    }
    return directory_ + (directory_.ends_with('/') ? "" : "/") + name + ".txt";
}
