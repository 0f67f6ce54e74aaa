#pragma once

#include <cstdarg>
#include <ctime>
#include <string>
#include <string_view>

namespace quorbel {

/// The entry has no system error to tell.
inline constexpr int kNoSystemError = -1;

/// Builds the text of a log entry: "context message", and with a system error
/// "context message [System Library Error] its text". A null or empty context is left out, with its blank.
///
/// Both the format put together and the expanded message end after 2047 bytes. A conversion that the first
/// limit cuts in two is dropped. A percent sign in the context or the error text stands for itself.
std::string BuildLogMessage(const char* context, const char* format, int systemError, va_list arguments);

/// "[TID:4711] message" with the kernel's id of the calling thread.
std::string WithThreadId(const std::string& message);

/// Gives the seconds used: `seconds`, or the current time for 0. Fills `text`, when given, with their local
/// time, month first: "02/01/2024 09:05:03".
std::time_t FormatLogTime(std::time_t seconds, std::string* text = nullptr);

/// One entry as it stands in a log file, without a line end of its own:
/// "02/01/2024 09:05:03 SOAP [INFO] message". An empty module is left out with its blank; a level without a
/// tag leaves its blank. `time` is in seconds, 0 means now. docs/log-files.md describes the files.
std::string LogLine(std::string_view module, unsigned level, std::string_view message, std::time_t time);

/// The message as it may stand in a file or on a terminal: it cannot pass for another entry, since its later
/// lines get a blank in front where they begin like one, and control bytes other than tab and line ends are
/// written as "\x1b".
std::string SafeLogText(std::string_view message);

}  // namespace quorbel
