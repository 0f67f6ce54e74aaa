#include "syslib/CVLogInterface.h"

#include <cerrno>

#include "syslib/LogText.h"

using namespace quorbel;

// Each operation differs in its level only, and a variadic function cannot hand its arguments to another one:
// the macros write the seven bodies, and the four that take up `errno`, from one line each.
#define QUORBEL_LOG_OPERATION(name, eventLevel, errorCode)                   \
    int CVLogInterface::name(const char* context, const char* format, ...) { \
        const int saved = errno;                                             \
        va_list arguments;                                                   \
        va_start(arguments, format);                                         \
        const Entry entry{eventLevel, context, format, errorCode};           \
        const int result = WriteEntry(entry, arguments);                     \
        va_end(arguments);                                                   \
        errno = saved;                                                       \
        return result;                                                       \
    }

QUORBEL_LOG_OPERATION(Trace, LogLevel::Trace, kNoSystemError)
QUORBEL_LOG_OPERATION(Debug, LogLevel::Debug, kNoSystemError)
QUORBEL_LOG_OPERATION(Info, LogLevel::Info, kNoSystemError)
QUORBEL_LOG_OPERATION(Warn, LogLevel::Warn, kNoSystemError)
QUORBEL_LOG_OPERATION(Error, LogLevel::Error, kNoSystemError)
QUORBEL_LOG_OPERATION(Critical, LogLevel::Critical, kNoSystemError)
QUORBEL_LOG_OPERATION(Fatal, LogLevel::Fatal, kNoSystemError)
QUORBEL_LOG_OPERATION(WarnSystem, LogLevel::Warn, saved)
QUORBEL_LOG_OPERATION(ErrorSystem, LogLevel::Error, saved)
QUORBEL_LOG_OPERATION(CriticalSystem, LogLevel::Critical, saved)
QUORBEL_LOG_OPERATION(FatalSystem, LogLevel::Fatal, saved)

#undef QUORBEL_LOG_OPERATION

int CVLogInterface::VLog(LogLevel level, const char* context, const char* format, va_list arguments) {
    const int saved = errno;
    const int result = WriteEntry({level, context, format, kNoSystemError}, arguments);
    errno = saved;
    return result;
}

int CVLogInterface::VLogSystem(LogLevel level, const char* context, const char* format, va_list arguments) {
    const int saved = errno;
    const int result = WriteEntry({level, context, format, saved}, arguments);
    errno = saved;
    return result;
}

int CVLogInterface::LogByCode(int code, const char* context, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = VLog(LogLevelOfCode(code), context, format, arguments);
    va_end(arguments);
    return result;
}
