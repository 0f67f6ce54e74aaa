#pragma once

#include <exception>
#include <string>

/// The error text of the current `errno`, at most 1023 bytes. Reads `errno` before anything else can change
/// it.
std::string GetSystemErrorText();

/// A failure of the platform layer: the program's own message, the unit and line that raised it and the
/// operating system's text.
///
/// `what` is deliberately left to std::exception: logs carry `ToString`. Catch this before std::exception.
class CVException : public std::exception {
public:
    /// `file` is the unit's name ("CVioFile"), not a path; `systemMessage` is empty when no call failed.
    CVException(std::string file, int line, std::string message, std::string systemMessage = {});

    /// One line for a log.
    virtual std::string ToString() const;
    virtual std::string GetMessage() const;
    virtual std::string GetFile() const;

    int GetLine() const { return line_; }
    const std::string& GetSystemMessage() const { return systemMessage_; }

protected:
    /// "File[..] Line[..] Msg[..] SysMsg[..]", the part that every text form ends with.
    std::string Origin() const;

private:
    std::string message_;
    std::string file_;
    int line_;
    std::string systemMessage_;
};

/// A failed operation on a file, a directory or a socket peer, named by its I/O path.
class CVioException : public CVException {
public:
    CVioException(std::string ioPath, std::string file, int line, std::string message,
                  std::string systemMessage = {});

    std::string ToString() const override;
    const std::string& GetIoPath() const { return ioPath_; }

private:
    std::string ioPath_;
};

/// A failed operation on a thread, a lock or an event.
class CVconException : public CVException {
public:
    /// `threadId` is the kernel's id of the thread concerned, as `ps -L` shows it.
    CVconException(int threadId, std::string file, int line, std::string message,
                   std::string systemMessage = {});
    /// Short form: no file, line 0, no system message.
    CVconException(int threadId, std::string message);

    std::string ToString() const override;
    int GetThreadId() const { return threadId_; }

private:
    int threadId_;
};

namespace quorbel {

/// Throws the CVconException of a unit of threads, locks and events.
///
/// `code` is the error number of the call that failed, whose text becomes the system message; 0 for none.
/// `threadId` 0 stands for the calling thread.
[[noreturn]] void RaiseConFailure(const char* unit, int line, const char* message, int code,
                                  int threadId = 0);

}  // namespace quorbel
