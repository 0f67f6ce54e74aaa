#pragma once

#include <cstdarg>
#include <string>

namespace quorbel {

/// The entry has no system error to tell.
inline constexpr int kNoSystemError = -1;

/// Builds the text of a log entry: "context message", and with a system error
/// "context message [System Library Error] its text". A null or empty context is left out, with its blank.
///
/// Both the format put together and the expanded message end after 2047 bytes. A conversion that the first
/// limit cuts in two is dropped. A percent sign in the context or the error text stands for itself.
std::string BuildEventMessage(const char* context, const char* format, int systemError, va_list arguments);

/// "[TID:4711] message" with the kernel's id of the calling thread.
std::string WithThreadId(const std::string& message);

}  // namespace quorbel
