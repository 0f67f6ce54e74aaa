#include "tools/cvlogs/Moment.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace quorbel {

namespace {

constexpr const char* kFormats[] = {
    "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M", "%Y-%m-%dT%H:%M",
    "%Y-%m-%d",          "%m/%d/%Y %H:%M:%S", "%m/%d/%Y %H:%M", "%m/%d/%Y",
};

// Of today.
constexpr const char* kTimeFormats[] = {"%H:%M:%S", "%H:%M"};

constexpr struct {
    const char* word;
    std::int64_t seconds;
} kUnits[] = {
    {"s", 1},     {"sec", 1},     {"second", 1},   {"seconds", 1}, {"m", 60},        {"min", 60},
    {"mins", 60}, {"minute", 60}, {"minutes", 60}, {"h", 3600},    {"hour", 3600},   {"hours", 3600},
    {"d", 86400}, {"day", 86400}, {"days", 86400}, {"w", 604800},  {"week", 604800}, {"weeks", 604800},
};

constexpr struct {
    const char* word;
    int days;
} kDays[] = {{"today", 0}, {"yesterday", -1}};

template <class Number>
std::optional<Number> ParseNumber(const char* first, const char* last) {
    Number number{};
    const auto [end, error] = std::from_chars(first, last, number);
    if (first == last || end != last || error != std::errc()) return std::nullopt;
    return number;
}

std::optional<std::int64_t> ParseAge(std::string_view text) {
    constexpr std::string_view kAgo = " ago";
    if (text.ends_with(kAgo)) text.remove_suffix(kAgo.size());
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    // 32 bits: the product cannot overflow.
    const auto count = ParseNumber<std::uint32_t>(text.data(), text.data() + digits);
    text.remove_prefix(digits);
    if (text.starts_with(' ')) text.remove_prefix(1);
    for (const auto& [word, seconds] : kUnits) {
        if (count && text == word) return *count * seconds;
    }
    return std::nullopt;
}

// Between the seconds and an offset; a log tells whole seconds.
std::string WithoutFraction(std::string text) {
    const std::size_t point = text.find('.');
    if (point == text.npos || point == 0) return text;
    const std::size_t end = std::min(text.find_first_not_of("0123456789", point + 1), text.size());
    return end > point + 1 ? text.erase(point, end - point) : text;
}

// What the format leaves out comes from `local`.
std::optional<std::int64_t> ParseDate(const std::string& text, const std::string& format, std::tm local) {
    const char* end = strptime(text.c_str(), format.c_str(), &local);
    if (end == nullptr || *end != '\0') return std::nullopt;
    const int day = local.tm_mday;
    const long offset = local.tm_gmtoff;
    local.tm_isdst = -1;
    const bool hasOffset = format.ends_with("%z");
    const std::time_t seconds = hasOffset ? timegm(&local) - offset : std::mktime(&local);
    if (local.tm_mday != day) return std::nullopt;  // such as 30 February, which became March
    return seconds;
}

std::tm Midnight(std::time_t now, int days) {
    std::tm local{};
    localtime_r(&now, &local);
    local.tm_mday += days;
    local.tm_hour = local.tm_min = local.tm_sec = 0;
    local.tm_isdst = -1;
    return local;
}

std::optional<std::int64_t> ParseLocal(const std::string& text, std::time_t now) {
    for (const auto& [word, days] : kDays) {
        std::tm midnight = Midnight(now, days);
        if (text == word) return std::mktime(&midnight);
    }
    for (const char* format : kTimeFormats) {
        if (const auto seconds = ParseDate(text, format, Midnight(now, 0))) return seconds;
    }
    for (const std::string format : kFormats) {
        if (const auto seconds = ParseDate(text, format, {})) return seconds;
        if (!format.ends_with("%S")) continue;
        if (const auto seconds = ParseDate(text, format + "%z", {})) return seconds;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::int64_t> ParseMoment(const std::string& text, std::time_t now) {
    if (text == "now") return now;
    if (text.starts_with('@')) return ParseNumber<std::int64_t>(text.data() + 1, text.data() + text.size());
    if (const auto age = ParseAge(text)) return now - *age;
    return ParseLocal(WithoutFraction(text), now);
}

}  // namespace quorbel
