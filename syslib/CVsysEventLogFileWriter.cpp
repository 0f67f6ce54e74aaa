#include "syslib/CVsysEventLogFileWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "CVException.h"
#include "CVioFile.h"
#include "syslib/EventLine.h"
#include "syslib/LogReport.h"
#include "util/StringRoutines.h"

using namespace quorbel;

namespace {

// These names are older than this class; administrators look for them.
constexpr const char* kPathSource = "CVsysEventLogInterface::setFilePath";
constexpr const char* kPrepareSource = "CVsysEventLogInterface::loadWriterConfig";
constexpr const char* kWriteSource = "CVsysEventLogFileWriter::DoWork";
constexpr const char* kUnknown = "Unknown Error";

constexpr int kAttemptsAfterRefusal = 33;  // about a second

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

std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return "./";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Lock files and archives are made beside the log file: a file that can be written in a directory that cannot
// is of no use.
void RequireRoomForFiles(const std::string& directory) {
    if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0) return;
    throw CVioException(directory, "CVsysEventLogFileWriter", __LINE__, "Log directory is not writable",
                        GetSystemErrorText());
}

}  // namespace

CVsysEventLogFileWriter::CVsysEventLogFileWriter(std::string identity, LockRetry retry)
    : identity_(std::move(identity)), retry_(std::move(retry)) {}

bool CVsysEventLogFileWriter::setProperty(const std::string& key, const std::string& value) {
    if (EqualNoCase(key, "numFiles")) return StoreNonZero(archive_.files, value);
    if (EqualNoCase(key, "bytesPerFiles")) return StoreNonZero(archive_.bytesPerFile, value);
    if (EqualNoCase(key, "filePath")) return setFilePath(value);
    if (EqualNoCase(key, "autoAppend")) autoAppend_ = true;  // sites rely on "0" switching it on, too
    if (EqualNoCase(key, "perProcessFile")) perProcessFile_ = ParseNumber(value) != 0;
    return true;
}

bool CVsysEventLogFileWriter::setFilePath(const std::string& value) {
    if (value.empty()) return false;
    try {
        const std::string directory = DirectoryOf(value);
        RequireRoomForFiles(directory);
        CVioFile(value).Open("a+");
        path_ = value;
        directory_ = directory;
        return true;
    } catch (...) {
        ReportCaughtException(kPathSource, identity_, kUnknown);
        return false;
    }
}

void CVsysEventLogFileWriter::PrepareDirectory() {
    if (!isReady()) return;
    try {
        RemoveDeadLockFiles(directory_);
    } catch (...) {
        ReportCaughtException(kPrepareSource, identity_, kUnknown);
    }
    initialised_ = !IsLockHopeless(path_ + ".lock");
    if (!initialised_) ReportLogFailure(kPrepareSource, identity_, "Can not lock '" + path_ + ".lock'");
}

bool CVsysEventLogFileWriter::isReady() {
    return initialised_ && archive_.bytesPerFile != 0 && archive_.files != 0 && !path_.empty();
}

int CVsysEventLogFileWriter::DoWork(const std::string& module, unsigned level, const std::string& message,
                                    int /*extra*/, const char* /*userText*/, std::time_t time) {
    if (!isReady()) return 0;
    try {
        Append(module, level, message, time);
        return 1;
    } catch (...) {
        ReportCaughtException(kWriteSource, identity_, kUnknown);
        return 0;
    }
}

void CVsysEventLogFileWriter::Append(const std::string& module, unsigned level, const std::string& message,
                                     std::time_t time) {
    const std::string target = perProcessFile_ ? TargetOf(module) : path_;
    LockRetry retry = retry_;
    // A holder that hangs costs a process one full wait, not one for each entry.
    if (lockWasRefused_) retry.attempts = std::min(retry.attempts, kAttemptsAfterRefusal);
    lockWasRefused_ = true;
    const LockFile lock(target + ".lock", retry);
    lockWasRefused_ = false;

    ArchiveWhenFull(target, archive_, identity_);
    std::string line = EventLine(perProcessFile_ ? "" : module, level, message, time);
    if (autoAppend_ && !message.empty() && !IsSpace(message.back())) line += '\n';
    CVioFile file(target);
    file.Open("a+");
    file.Write(line);  // one write: a process killed between two would leave half a line
}

std::string CVsysEventLogFileWriter::TargetOf(const std::string& module) const {
    std::string name = module;
    for (char& c : name) {
        if (c == ' ' || c == '/') c = '_';
    }
    return directory_ + (directory_.ends_with('/') ? "" : "/") + name + ".txt";
}
