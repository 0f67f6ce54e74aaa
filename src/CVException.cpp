#include "CVException.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

/// Every text form opens alike, up to the field that tells the class.
std::string Raised(const char* field, const std::string& value) {
    return std::string("Exception raised! ") + field + "[" + value + "] ";
}

}  // namespace

std::string GetSystemErrorText() {
    const int code = errno;
    char buffer[1024] = {};
    const char* text = strerror_r(code, buffer, sizeof buffer - 1);  // need not be the buffer
    return std::string(text, strnlen(text, sizeof buffer - 1));
}

CVException::CVException(std::string file, int line, std::string message, std::string systemMessage)
    : message_(std::move(message)),
      file_(std::move(file)),
      line_(line),
      systemMessage_(std::move(systemMessage)) {}

std::string CVException::ToString() const {
    return "Exception raised! " + Origin();
}

std::string CVException::GetMessage() const {
    return message_;
}

std::string CVException::GetFile() const {
    return file_;
}

std::string CVException::Origin() const {
    return "File[" + file_ + "] Line[" + std::to_string(line_) + "] Msg[" + message_ + "] SysMsg[" +
           systemMessage_ + "]";
}

CVioException::CVioException(std::string ioPath, std::string file, int line, std::string message,
                             std::string systemMessage)
    : CVException(std::move(file), line, std::move(message), std::move(systemMessage)),
      ioPath_(std::move(ioPath)) {}

std::string CVioException::ToString() const {
    return Raised("IO path", ioPath_) + Origin();
}

CVconException::CVconException(int threadId, std::string file, int line, std::string message,
                               std::string systemMessage)
    : CVException(std::move(file), line, std::move(message), std::move(systemMessage)), threadId_(threadId) {}

CVconException::CVconException(int threadId, std::string message)
    : CVconException(threadId, {}, 0, std::move(message)) {}

std::string CVconException::ToString() const {
    return Raised("ThreadID", std::to_string(threadId_)) + Origin();
}

namespace quorbel {

void RaiseConFailure(const char* unit, int line, const char* message, int code, int threadId) {
    errno = code;
    const std::string systemMessage = code == 0 ? "" : GetSystemErrorText();
    throw CVconException(threadId == 0 ? gettid() : threadId, unit, line, message, systemMessage);
}

}  // namespace quorbel
