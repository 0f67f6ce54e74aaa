#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "CVconLock.h"
#include "CVobject.h"

/// One buffered file with a lock that keeps out other processes and the other threads that use this object.
///
/// Failures are CVioExceptions of the unit "CVioFile" that carry the path; `errno` is still the failed call's
/// when they are caught. A failed operation leaves the object as it was, save that a failed Lock has taken
/// the in-process lock: Unlock on every path. Child programs do not inherit the descriptor.
///
/// The kernel ties the file lock to the process: it does not keep out a second object on the same path in
/// this process, and closing any such object drops it. In a child process the file is open, at a position that
/// both processes move, and not locked.
///
/// Opening, writing and closing cannot be left by the end of their thread; reading and waiting for a lock can.
class CVioFile : public CVobject {
public:
    /// Opens nothing.
    explicit CVioFile(std::string path);
    ~CVioFile() override;

    CVioFile(const CVioFile&) = delete;
    CVioFile& operator=(const CVioFile&) = delete;

    /// `mode` is fopen's. Throws "File Was Already Open", "File Open Failed".
    void Open(const std::string& mode);
    /// Drops the file lock, but not the in-process one, and swallows failures: a full disk shows in Write.
    void Close() noexcept;
    bool IsOpen() const { return stream_ != nullptr; }
    const std::string& GetPath() const { return path_; }
    /// The mode text last opened with.
    const std::string& GetMode() const { return mode_; }

    /// Locks the whole file, 'r' shared or 'w' alone, waiting when told to, and goes to its start. 'r' needs
    /// a file open for reading, 'w' one open for writing. Throws "File Get File Number Failed", "File Lock
    /// Failed".
    void Lock(char kind, bool wait);
    /// Harmless without a lock, also while another thread has it.
    void Unlock() noexcept;

    /// The next line with its line feed, cut (and continued by the next call) at capacity - 1 bytes. Returns
    /// its length: an empty line gives 1, only the end of the file gives 0. A capacity below 2 always gives
    /// 0. Throws "File not opened for reading", "File Get Lines Failed".
    std::size_t GetLine(char* buffer, std::size_t capacity);
    /// Fewer bytes than asked for mean the end of the file. Throws "File not opened for reading", "File Read
    /// Failed".
    std::size_t Read(void* buffer, std::size_t size);
    /// Each form hands everything to the kernel before it returns. Throws "File not opened for writting",
    /// "File Write Failed".
    void Write(const void* data, std::size_t size);
    void Write(std::string_view text);
    [[gnu::format(printf, 2, 3)]] void WriteFormatted(const char* format, ...);
    /// Throws "File Flush Failed".
    void Flush();
    /// Goes to the start; what another process has written meanwhile is seen.
    void Rewind() noexcept;
    /// Goes to the start, too. Throws "File Get File Number Failed", "File Truncate Failed".
    void Truncate(off_t length);

    // These concern the path, open or not. They throw "File Get State Failed" and "File utime Failed";
    // IsDirectory answers false instead.
    off_t GetSize() const;
    std::time_t GetModificationTime() const;
    bool IsDirectory() const;
    void SetTime(std::time_t access, std::time_t modification);

private:
    struct Closer {
        void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
    };

    [[noreturn]] void Fail(int line, const char* message) const;
    std::FILE* Stream(int line, const char* closedMessage) const;
    int Descriptor(int line) const;
    bool FreeThreadLock() noexcept;
    void ForgetLocksOfParent() noexcept;

    std::string path_;
    std::string mode_;
    std::unique_ptr<std::FILE, Closer> stream_;
    bool lastWasRead_ = false;
    CVconLock lock_;
    int lockDepth_ = 0;  // guarded by lock_
    quorbel::ProcessMark process_;
};
