#include "tools/cvlogs/MomentText.h"

#include <charconv>

namespace quorbel {

namespace {

constexpr const char* kFormats[] = {
    "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M", "%Y-%m-%dT%H:%M",
    "%Y-%m-%d",          "%m/%d/%Y %H:%M:%S", "%m/%d/%Y %H:%M", "%m/%d/%Y",
};

constexpr struct {
    char unit;
    std::int64_t seconds;
} kUnits[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};

template <class Number>
std::optional<Number> ParseNumber(const char* first, const char* last) {
    Number number{};
    const auto [end, error] = std::from_chars(first, last, number);
    if (first == last || end != last || error != std::errc()) return std::nullopt;
    return number;
}

std::optional<std::int64_t> ParseAge(const std::string& text) {
    for (const auto& [unit, seconds] : kUnits) {
        if (!text.ends_with(unit)) continue;
        // 32 bits: the product cannot overflow.
        const auto count = ParseNumber<std::uint32_t>(text.data(), text.data() + text.size() - 1);
        if (count) return *count * seconds;
    }
    return std::nullopt;
}

std::optional<std::int64_t> ParseDate(const std::string& text, const char* format) {
    std::tm local{};
    const char* end = strptime(text.c_str(), format, &local);
    if (end == nullptr || *end != '\0') return std::nullopt;
    const int day = local.tm_mday;
    local.tm_isdst = -1;
    const std::time_t seconds = std::mktime(&local);
    if (local.tm_mday != day) return std::nullopt;  // such as 30 February, which became March
    return seconds;
}

}  // namespace

std::optional<std::int64_t> ParseMoment(const std::string& text, std::time_t now) {
    if (text.starts_with('@')) return ParseNumber<std::int64_t>(text.data() + 1, text.data() + text.size());
    if (const auto age = ParseAge(text)) return now - *age;
    for (const char* format : kFormats) {
        if (const auto seconds = ParseDate(text, format)) return seconds;
    }
    return std::nullopt;
}

}  // namespace quorbel
