#include "syslib/LogText.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "CVException.h"
#include "syslib/LogLevel.h"

namespace quorbel {

namespace {

constexpr std::size_t kLimit = 2047;

std::string Escaped(const char* text) {
    std::string escaped;
    for (; *text != '\0'; ++text) {
        if (*text == '%') escaped += '%';
        escaped += *text;
    }
    return escaped;
}

// Where the conversion that the end of `format` leaves unfinished begins; the length when there is none.
std::size_t EndOfWholeConversions(const std::string& format) {
    std::size_t at = 0;
    while ((at = format.find('%', at)) != std::string::npos) {
        const std::size_t last = format.find_first_not_of("-+ #0'I123456789.*hlLqjzt$", at + 1);
        if (last == std::string::npos) return at;
        at = last + 1;
    }
    return format.size();
}

std::string EffectiveFormat(const char* context, const char* format, int systemError) {
    std::string effective;
    if (context != nullptr && *context != '\0') effective = Escaped(context) + " ";
    effective += format;
    if (systemError != kNoSystemError) {
        errno = systemError;
        effective += " [System Library Error] " + Escaped(GetSystemErrorText().c_str());
    }
    if (effective.size() > kLimit) {
        effective.resize(kLimit);
        effective.resize(EndOfWholeConversions(effective));
    }
    return effective;
}

}  // namespace

std::string BuildLogMessage(const char* context, const char* format, int systemError, va_list arguments) {
    std::string effective = EffectiveFormat(context, format, systemError);
    char message[kLimit + 1];
    // A format that the library refuses, such as one with a percent sign at its end, is its own message.
    if (std::vsnprintf(message, sizeof message, effective.c_str(), arguments) < 0) return effective;
    return message;
}

std::string WithThreadId(const std::string& message) {
    return "[TID:" + std::to_string(gettid()) + "] " + message;
}

std::time_t FormatLogTime(std::time_t seconds, std::string* text) {
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

namespace {

/// "02/01/2024 09:05:03", as every entry and every closing line begins.
bool BeginsLikeAnEntry(std::string_view text) {
    constexpr std::string_view kForm = "00/00/0000 00:00:00";
    if (text.size() < kForm.size()) return false;
    for (std::size_t at = 0; at < kForm.size(); ++at) {
        const bool digit = text[at] >= '0' && text[at] <= '9';
        if (kForm[at] == '0' ? !digit : text[at] != kForm[at]) return false;
    }
    return true;
}

/// Terminals obey control bytes; line ends and tabs are what a text may have.
bool IsControl(std::string_view text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x20) return byte == 0x7F;
    const bool endsLine = byte == '\r' && at + 1 < text.size() && text[at + 1] == '\n';
    return byte != '\t' && byte != '\n' && !endsLine;
}

}  // namespace

std::string SafeLogText(std::string_view message) {
    constexpr char kHex[] = "0123456789abcdef";
    std::size_t plain = 0;  // mostly all of it
    while (plain < message.size() && static_cast<unsigned char>(message[plain]) >= 0x20 &&
           message[plain] != 0x7F)
        ++plain;
    std::string text(message.substr(0, plain));
    for (std::size_t at = plain; at < message.size(); ++at) {
        if (IsControl(message, at)) {
            const auto byte = static_cast<unsigned char>(message[at]);
            text.append("\\x").append({kHex[byte >> 4], kHex[byte & 0x0F]});
        } else {
            text += message[at];
        }
        if (message[at] == '\n' && BeginsLikeAnEntry(message.substr(at + 1))) text += ' ';
    }
    return text;
}

std::string LogLine(std::string_view module, unsigned level, std::string_view message, std::time_t time) {
    std::string line;
    FormatLogTime(time, &line);
    line.reserve(line.size() + module.size() + message.size() + 16);
    line += ' ';
    if (!module.empty()) line.append(module) += ' ';
    line.append(LogLevelTag(level)) += ' ';
    return line.append(message);
}

}  // namespace quorbel
