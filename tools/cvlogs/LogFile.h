#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct gzFile_s;

namespace quorbel {

/// One file of a log, open for reading; gzip is taken off on the way. The file may be renamed or deleted
/// meanwhile.
class LogFile {
public:
    /// Null when there is no such file. Throws std::runtime_error when it cannot be read.
    static std::unique_ptr<LogFile> Open(const std::string& path);
    ~LogFile();

    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Fills the room as far as there are bytes; 0 at the end of what there is at present. Throws.
    std::size_t Read(char* room, std::size_t size);

    /// Starts again at the beginning when the file has become shorter than what was read of it.
    bool RestartIfShorter();

    const std::string& Path() const { return path_; }
    bool IsSameAs(const LogFile& other) const;
    std::int64_t Size() const;         ///< on disk, at present
    std::int64_t BytesRead() const;    ///< on disk
    std::int64_t LastWritten() const;  ///< nanoseconds since the epoch; survives renaming and gzip

private:
    struct CloseGzip {
        void operator()(gzFile_s* file) const noexcept;
    };

    LogFile(std::string path, int descriptor);
    struct stat Status() const;

    const std::string path_;
    const int descriptor_;
    std::unique_ptr<gzFile_s, CloseGzip> gzip_;  // null for a plain file; owns a descriptor of its own
};

/// The log at `path`: the file and its archives "<path>.<number>", plain or with ".gz" behind it, in the
/// order they were written in. An archive that is there in both forms counts once. Throws
/// std::runtime_error when there is none.
std::vector<std::unique_ptr<LogFile>> OpenLogFiles(const std::string& path);

}  // namespace quorbel
