#include "CVsystemLog.h"

#include <pthread.h>
#include <syslog.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include "CVException.h"
#include "NoCancellation.h"

using namespace quorbel;

namespace {

std::string Format(const char* format, va_list arguments) {
    constexpr std::size_t kMessageSize = 65535;
    const auto buffer = std::make_unique_for_overwrite<char[]>(kMessageSize);
    return std::vsnprintf(buffer.get(), kMessageSize, format, arguments) < 0 ? std::string() : buffer.get();
}

/// The two conversions that mean something to syslog without arguments. The text comes from outside in part,
/// so it must never be the format itself.
std::string Interpret(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = text[i] == '%' && i + 1 < text.size() ? text[i + 1] : '\0';
        if (next == 'm')
            result += GetSystemErrorText();
        else
            result += text[i];
        if (next == 'm' || next == '%') ++i;
    }
    return result;
}

void SendEntry(int priority, const std::string& identity, const std::string& text) {
    // openlog keeps the pointer to the identity and closelog forgets it for the whole process: one thread at
    // a time. Never destroyed: a detached thread may report while the process ends.
    static std::mutex& mutex = *new std::mutex;
    // A child process that is forked meanwhile must not find it taken, nor the library's own lock.
    [[maybe_unused]] static const int registered =
        pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); }, [] { mutex.unlock(); });
    const std::lock_guard guard(mutex);
    openlog(identity.c_str(), LOG_PID, LOG_DAEMON);
    syslog(priority, "%s", text.c_str());
    closelog();
}

int Write(int priority, const char* source, const char* identity, const char* format,
          va_list arguments) noexcept {
    const int code = errno;
    const NoCancellation shield;
    int written = 0;
    try {
        const bool named = identity != nullptr && *identity != '\0';
        const std::string name = named ? identity : program_invocation_short_name;
        const std::string message = Format(format, arguments);
        errno = code;  // what "%m" stands for
        SendEntry(priority, name,
                  Interpret(name + "-ERROR " + (source == nullptr ? "" : source) + ": " + message));
        written = 1;
    } catch (const std::exception&) {  // no memory
    }
    errno = code;
    return written;
}

}  // namespace

int CVsystemLog::WriteInfo(const char* source, const char* identity, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    const int written = Write(LOG_INFO, source, identity, format, arguments);
    va_end(arguments);
    return written;
}

int CVsystemLog::WriteError(const char* source, const char* identity, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    const int written = Write(LOG_ERR, source, identity, format, arguments);
    va_end(arguments);
    return written;
}
