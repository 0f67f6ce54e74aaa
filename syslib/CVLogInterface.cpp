#include "syslib/CVLogInterface.h"

#include <cerrno>

#include "syslib/EventMessage.h"

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

QUORBEL_LOG_OPERATION(Trace, EventLevel::Trace, kNoSystemError)
QUORBEL_LOG_OPERATION(Debug, EventLevel::Debug, kNoSystemError)
QUORBEL_LOG_OPERATION(Info, EventLevel::Info, kNoSystemError)
QUORBEL_LOG_OPERATION(Warn, EventLevel::Warn, kNoSystemError)
QUORBEL_LOG_OPERATION(Error, EventLevel::Error, kNoSystemError)
QUORBEL_LOG_OPERATION(Critical, EventLevel::Critical, kNoSystemError)
QUORBEL_LOG_OPERATION(Fatal, EventLevel::Fatal, kNoSystemError)
QUORBEL_LOG_OPERATION(WarnSystem, EventLevel::Warn, saved)
QUORBEL_LOG_OPERATION(ErrorSystem, EventLevel::Error, saved)
QUORBEL_LOG_OPERATION(CriticalSystem, EventLevel::Critical, saved)
QUORBEL_LOG_OPERATION(FatalSystem, EventLevel::Fatal, saved)

#undef QUORBEL_LOG_OPERATION

int CVLogInterface::LogByCode(int code, const char* context, const char* format, ...) {
    const int saved = errno;
    va_list arguments;
    va_start(arguments, format);
    const int result = WriteEntry({EventLevelOfCode(code), context, format, kNoSystemError}, arguments);
    va_end(arguments);
    errno = saved;
    return result;
}
