#pragma once

#include <cstdarg>

#include "syslib/LogLevel.h"

/// Where a component writes its diagnostics: one operation per level.
///
/// `context` is usually the calling function's name; null and empty both mean that there is none. It must not
/// hold text from outside, nor may `format`: pass such text as an argument of "%s". A format needs at most
/// 2047 bytes when expanded, the rest is cut. Each operation gives the writer's result: 1 written, 0 not
/// (also when the level is below the threshold, in which case nothing is formatted). `errno` is as before
/// afterwards. Any thread may call.
class CVLogInterface {
public:
    virtual ~CVLogInterface() = default;

    [[gnu::format(printf, 3, 4)]] int Trace(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int Debug(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int Info(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int Warn(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int Error(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int Critical(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int Fatal(const char* context, const char* format, ...);

    // The system-error forms append the text of the `errno` that they find.
    [[gnu::format(printf, 3, 4)]] int WarnSystem(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int ErrorSystem(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int CriticalSystem(const char* context, const char* format, ...);
    [[gnu::format(printf, 3, 4)]] int FatalSystem(const char* context, const char* format, ...);

    // The same for callers that have their arguments as a list, which is left as vprintf leaves it.
    [[gnu::format(printf, 4, 0)]] int VLog(quorbel::LogLevel level, const char* context, const char* format,
                                           va_list arguments);
    [[gnu::format(printf, 4, 0)]] int VLogSystem(quorbel::LogLevel level, const char* context,
                                                 const char* format, va_list arguments);

    /// For callers that hold a numeric code instead of a level: 17 is an error, 18 a warning, 19 information,
    /// any other code a trace entry.
    [[gnu::format(printf, 4, 5)]] int LogByCode(int code, const char* context, const char* format, ...);

protected:
    /// One entry to be formatted and written; systemError is kNoSystemError, or the `errno` whose text is
    /// appended.
    struct Entry {
        quorbel::LogLevel level;
        const char* context;
        const char* format;
        int systemError;
    };

    /// What the operations above come down to.
    virtual int WriteEntry(const Entry& entry, va_list arguments) = 0;
};
