#include "syslib/EventTime.h"

#include <cstdio>

namespace quorbel {

std::time_t FormatEventTime(std::time_t seconds, std::string* text) {
    const std::time_t used = seconds == 0 ? std::time(nullptr) : seconds;
    if (text == nullptr) return used;

    std::tm local{};
    localtime_r(&used, &local);
    char buffer[80];  // room for six numbers of any size
    const int length =
        std::snprintf(buffer, sizeof buffer, "%02d/%02d/%d %02d:%02d:%02d", local.tm_mon + 1, local.tm_mday,
                      local.tm_year + 1900, local.tm_hour, local.tm_min, local.tm_sec);
    text->assign(buffer, static_cast<std::size_t>(length));
    return used;
}

}  // namespace quorbel
