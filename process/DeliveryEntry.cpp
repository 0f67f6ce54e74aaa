#include "process/DeliveryEntry.h"

#include <utf8.h>
#include <utf8/unchecked.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr std::size_t kReplyBytes = 200;

constexpr std::string_view kOutcomeNames[] = {"sending", "answered", "not-connected", "unknown", "refused"};

std::string_view NameOf(Outcome outcome) {
    return kOutcomeNames[static_cast<std::size_t>(outcome)];
}

bool NeedsNoQuotes(char c) {
    return IsAlphanumeric(c) || std::string_view("-._:/@+,%[]").find(c) != std::string_view::npos;
}

void AppendHex(std::string& text, unsigned char byte) {
    static constexpr char kHex[] = "0123456789abcdef";
    text += {'\\', 'x', kHex[byte >> 4], kHex[byte & 0x0F]};
}

void AppendAscii(std::string& text, char c) {
    constexpr std::string_view kNamed = "\"\\\n\r\t";
    constexpr std::string_view kNames = "\"\\nrt";
    if (const std::size_t named = kNamed.find(c); named != kNamed.npos) {
        text += {'\\', kNames[named]};
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
        AppendHex(text, static_cast<unsigned char>(c));
    } else {
        text += c;
    }
}

/// The second half of the control characters, and those that begin a line or turn the direction of the text.
bool IsInvisible(char32_t c) {
    return (c >= 0x80 && c < 0xA0) || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

void AppendValid(std::string& text, std::string_view valid) {
    for (const char* next = valid.data(); next != valid.data() + valid.size();) {
        const char* const first = next;
        const char32_t character = utf8::unchecked::next(next);
        if (character < 0x80) {
            AppendAscii(text, *first);
        } else if (!IsInvisible(character)) {
            text.append(first, next);
        } else {
            for (const char* byte = first; byte != next; ++byte) {
                AppendHex(text, static_cast<unsigned char>(*byte));
            }
        }
    }
}

void Add(std::string& entry, std::string_view key, std::string_view value) {
    if (value.empty()) return;
    if (!entry.empty()) entry += ' ';
    entry.append(key).append("=").append(LogfmtValue(value));
}

template <typename Number>
void AddNumber(std::string& entry, std::string_view key, const std::optional<Number>& number) {
    if (number) Add(entry, key, std::to_string(*number));
}

}  // namespace

LogLevel LevelOf(const Delivery& delivery) {
    switch (delivery.outcome) {
        case Outcome::Sending:
            return LogLevel::Debug;
        case Outcome::NotConnected:
        case Outcome::Unknown:
            return LogLevel::Error;
        case Outcome::Refused:
            return LogLevel::Warn;
        case Outcome::Answered:
            break;
    }
    const bool isPlain = !delivery.viaSecondary && delivery.httpStatus.value_or(0) < 400;
    return isPlain ? LogLevel::Info : LogLevel::Warn;
}

std::string LogfmtValue(std::string_view text) {
    if (!text.empty() && std::all_of(text.begin(), text.end(), NeedsNoQuotes)) return std::string(text);
    std::string quoted = "\"";
    while (!text.empty()) {
        const auto validSize =
            static_cast<std::size_t>(utf8::find_invalid(text.begin(), text.end()) - text.begin());
        AppendValid(quoted, text.substr(0, validSize));
        text.remove_prefix(validSize);
        if (text.empty()) break;
        AppendHex(quoted, static_cast<unsigned char>(text.front()));
        text.remove_prefix(1);
    }
    return quoted + '"';
}

std::string IsoTime(std::chrono::system_clock::time_point moment) {
    using namespace std::chrono;
    const auto second = floor<seconds>(moment);
    const std::time_t time = system_clock::to_time_t(second);
    std::tm local{};
    localtime_r(&time, &local);
    std::array<char, 40> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    std::array<char, 64> text{};
    const long offset = local.tm_gmtoff / 60;
    std::snprintf(text.data(), text.size(), "%s.%03d%c%02ld:%02ld", date.data(),
                  static_cast<int>(duration_cast<milliseconds>(moment - second).count()),
                  offset < 0 ? '-' : '+', std::abs(offset) / 60, std::abs(offset) % 60);
    return text.data();
}

std::string DeliveryEntry(const Delivery& delivery) {
    const bool wasPosted = delivery.outcome != Outcome::Refused;
    std::optional<long long> milliseconds;
    if (delivery.duration) milliseconds = delivery.duration->count();
    std::string entry;
    Add(entry, "at", IsoTime(delivery.at));
    Add(entry, "id", delivery.id);
    Add(entry, "method", delivery.method);
    Add(entry, "to", delivery.to);
    Add(entry, "job", delivery.job);
    Add(entry, "server", delivery.server);
    if (wasPosted) Add(entry, "via", delivery.viaSecondary ? "secondary" : "primary");
    Add(entry, "outcome", NameOf(delivery.outcome));
    AddNumber(entry, "http", delivery.httpStatus);
    AddNumber(entry, "ms", milliseconds);
    AddNumber(entry, "bytes", delivery.replySize);
    Add(entry, "client", delivery.client);
    Add(entry, "user", delivery.user);
    Add(entry, "cut", delivery.cut);
    Add(entry, "first", delivery.firstError);
    Add(entry, "error", delivery.error);
    Add(entry, "fault", delivery.fault);
    Add(entry, "reply", std::string_view(delivery.reply).substr(0, kReplyBytes));
    return entry;
}

}  // namespace quorbel
