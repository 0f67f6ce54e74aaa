#include "tools/operator/ProgressLine.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace quorbel {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kPause = std::chrono::milliseconds(200);

const Clock::time_point programStart = Clock::now();
Clock::time_point lastShown{};
bool isShown = false;

}  // namespace

void ShowProgress(std::int64_t done, std::int64_t total, const char* unit) {
    static const bool onTerminal = isatty(STDERR_FILENO) == 1;
    if (!onTerminal) return;
    const auto now = Clock::now();
    if (now - programStart < kPatience || now - lastShown < kPause) return;
    lastShown = now;
    isShown = true;
    std::fprintf(stderr, "\r%lld of %lld %s read", static_cast<long long>(done),
                 static_cast<long long>(total), unit);
}

void HideProgress() {
    if (!isShown) return;
    isShown = false;
    std::fputs("\r\x1b[K", stderr);
}

}  // namespace quorbel
