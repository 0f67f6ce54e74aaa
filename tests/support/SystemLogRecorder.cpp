#include "tests/support/SystemLogRecorder.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

using namespace quorbel;

namespace {

std::mutex mutex;
std::vector<SystemLogEntry> entries;

// Not copied and not guarded, like the C library's own: the sanitizers see when a caller lets the identity
// die or lets two threads in.
const char* openIdentity = nullptr;
int openOption = 0;
int openFacility = 0;

}  // namespace

namespace quorbel {

std::vector<SystemLogEntry> TakeSystemLog() {
    const std::lock_guard guard(mutex);
    return std::exchange(entries, {});
}

std::vector<std::string> TakeSystemLogTexts() {
    std::vector<std::string> texts;
    for (auto& entry : TakeSystemLog()) texts.push_back(std::move(entry.text));
    return texts;
}

}  // namespace quorbel

extern "C" void __wrap_openlog(const char* identity, int option, int facility) {
    openIdentity = identity;
    openOption = option;
    openFacility = facility;
}

extern "C" void __wrap_syslog(int priority, const char* format, ...) {
    std::string text(70000, '\0');
    va_list arguments;
    va_start(arguments, format);
    text.resize(std::vsnprintf(text.data(), text.size(), format, arguments));
    va_end(arguments);
    const std::lock_guard guard(mutex);
    entries.push_back(
        {openIdentity == nullptr ? "" : openIdentity, openOption, openFacility, priority, std::move(text)});
}

extern "C" void __wrap_closelog() {
    openIdentity = nullptr;
}
