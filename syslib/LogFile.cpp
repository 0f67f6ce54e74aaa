#include "syslib/LogFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "CVException.h"
#include "PathRoutines.h"
#include "syslib/LogReport.h"
#include "syslib/LogText.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr const char* kArchiveSource = "CVsysEventLog::Archive";
constexpr const char* kTakeBackSource = "CVsysEventLogFileWriter::DoWork";

/// A log file, open for appending.
class OpenLog {
public:
    OpenLog(const std::string& path, ArchiveRule rule, const std::string& identity);
    ~OpenLog() { close(descriptor_); }

    OpenLog(const OpenLog&) = delete;
    OpenLog& operator=(const OpenLog&) = delete;

    bool IsFull() const { return !isNew_ && status_.st_size >= std::int64_t{bytesPerFile_}; }
    bool EndsInsideALine() const;
    /// All of it or nothing.
    void Append(std::string_view text);
    void AppendEntry(std::string_view entry, LogFileEnd& end);

private:
    [[noreturn]] void Fail(int line, const char* message) const;
    bool IsRegular() const { return S_ISREG(status_.st_mode); }
    bool IsAsLeftBy(const LogFileEnd& end) const;

    const std::string& path_;
    const std::string& identity_;
    const std::int32_t bytesPerFile_;
    int descriptor_;
    bool isNew_ = false;
    struct stat status_ {};
};

OpenLog::OpenLog(const std::string& path, ArchiveRule rule, const std::string& identity)
    : path_(path), identity_(identity), bytesPerFile_(rule.bytesPerFile) {
    // For reading as well, like the mode "a+" of other programs: for the last byte.
    constexpr int kFlags = O_RDWR | O_APPEND | O_CLOEXEC;
    descriptor_ = open(path.c_str(), kFlags);
    if (descriptor_ < 0 && errno == ENOENT) {
        isNew_ = true;
        descriptor_ = open(path.c_str(), kFlags | O_CREAT, 0666);
    }
    if (descriptor_ >= 0) {
        fstat(descriptor_, &status_);
        return;
    }
    const int code = errno;
    isNew_ = stat(path.c_str(), &status_) != 0;
    if (IsFull()) ReportLogFailure(kArchiveSource, identity, "Can Not Open Log File");
    errno = code;
    Fail(__LINE__, "File Open Failed");
}

/// An entry that ends in white space is whole as it is (kept for compatibility: it gets no line end).
bool OpenLog::EndsInsideALine() const {
    char last = '\n';
    if (!IsRegular() || status_.st_size == 0) return false;
    return pread(descriptor_, &last, 1, status_.st_size - 1) == 1 && !IsSpace(last);
}

void OpenLog::Append(std::string_view text) {
    for (std::string_view rest = text; !rest.empty();) {
        const ssize_t written = write(descriptor_, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written > 0) rest.remove_prefix(static_cast<std::size_t>(written));
        if (rest.empty() || (written > 0 && !IsRegular())) continue;
        // A regular file takes a part only where there is no room for all; asking again can raise SIGXFSZ.
        const int code = written < 0 ? errno : ENOSPC;
        if (IsRegular() && ftruncate(descriptor_, status_.st_size) != 0) {
            ReportLogFailure(kTakeBackSource, identity_,
                             "Can not take back a part of an entry in '" + path_ + "'");
        }
        errno = code;
        Fail(__LINE__, "File Write Failed");
    }
    status_.st_size += static_cast<off_t>(text.size());
}

bool OpenLog::IsAsLeftBy(const LogFileEnd& end) const {
    return end.size == status_.st_size && end.number == status_.st_ino && end.device == status_.st_dev;
}

void OpenLog::AppendEntry(std::string_view entry, LogFileEnd& end) {
    const bool mayBeTorn = end.tornLine == TornLine::StartNewLine && !IsAsLeftBy(end);
    end.size = 0;
    if (mayBeTorn && EndsInsideALine()) {
        Append("\n" + std::string(entry));
    } else {
        Append(entry);
    }
    if (!IsRegular() || entry.empty() || !IsSpace(entry.back())) return;
    end.size = status_.st_size;
    end.number = status_.st_ino;
    end.device = status_.st_dev;
}

void OpenLog::Fail(int line, const char* message) const {
    throw CVioException(path_, "LogFile", line, message, GetSystemErrorText());
}

std::string ArchiveName(const std::string& path, std::int32_t number) {
    return path + "." + std::to_string(number);
}

bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

void WriteClosingLine(OpenLog& file, TornLine tornLine, const std::string& path,
                      const std::string& identity) {
    try {
        const bool newLine = tornLine == TornLine::StartNewLine && file.EndsInsideALine();
        std::string time;
        FormatLogTime(0, &time);
        file.Append((newLine ? "\n" : "") + time + " Archiving " + path + "\n");
    } catch (const CVException&) {
        // Archive all the same: on a full disk, dropping the oldest archive makes room.
        ReportCaughtException(kArchiveSource, identity, "Unknown Error");
    }
}

/// The highest archive that has to move. Numbers are tried, since a directory need not be listable; beyond a
/// thousand only those without a gap, since there may be two thousand million of them.
std::int32_t HighestToMove(const std::string& path, std::int32_t files) {
    constexpr std::int32_t kAlwaysTried = 1000;
    if (files - 1 <= kAlwaysTried) return files - 1;
    std::int32_t highest = kAlwaysTried;
    while (highest < files - 1 && Exists(ArchiveName(path, highest + 1))) ++highest;
    return highest;
}

void MoveArchivesUp(const std::string& path, std::int32_t files) {
    for (std::int32_t number = HighestToMove(path, files); number >= 1; --number) {
        RenameFile(ArchiveName(path, number), ArchiveName(path, number + 1));  // mostly there is none
    }
}

void MakeFirstArchive(const std::string& path, const std::string& identity) {
    const std::string first = ArchiveName(path, 1);
    if (RenameFile(path, first)) return;
    DeleteFile(first);
    if (RenameFile(path, first)) return;
    ReportLogFailure(kArchiveSource, identity,
                     "Can not rename log file from '" + path + "' to '" + first + "'");
}

void Archive(const std::string& path, std::int32_t files, const std::string& identity) {
    DeleteFile(ArchiveName(path, files));
    MoveArchivesUp(path, files);
    if (files != 0) MakeFirstArchive(path, identity);
}

}  // namespace

void AppendToLogFile(const std::string& path, std::string_view entry, LogFileEnd& end, ArchiveRule rule,
                     const std::string& identity) {
    {
        OpenLog file(path, rule, identity);
        if (!file.IsFull()) return file.AppendEntry(entry, end);
        WriteClosingLine(file, end.tornLine, path, identity);
    }
    Archive(path, rule.files, identity);
    OpenLog(path, rule, identity).AppendEntry(entry, end);
}

}  // namespace quorbel
