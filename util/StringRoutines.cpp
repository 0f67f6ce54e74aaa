#include "util/StringRoutines.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "PathRoutines.h"

using namespace quorbel;

namespace {

constexpr std::string_view kLineBlanks = " \t\r\n";

}  // namespace

namespace quorbel {

std::int32_t LeadingNumber(const char* text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long number = std::strtol(text, nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long>(number, Limits::min(), Limits::max()));
}

}  // namespace quorbel

char* TrimSpaces(char* text) {
    std::size_t length = std::strlen(text);
    while (length > 0 && IsSpace(text[length - 1])) --length;
    std::size_t start = 0;
    while (start < length && IsSpace(text[start])) ++start;
    std::memmove(text, text + start, length - start);
    text[length - start] = '\0';
    return text;
}

std::string TrimChars(std::string_view text, std::string_view set) {
    const std::size_t first = text.find_first_not_of(set);
    if (first == text.npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(set) - first + 1));
}

const char* SkipBlankLine(const char* text, bool skipComments) {
    if (text == nullptr) return nullptr;
    while (*text != '\0' && kLineBlanks.find(*text) != kLineBlanks.npos) ++text;
    if (*text == '\0' || (skipComments && *text == '#')) return nullptr;
    return text;
}

int CompareNoCase(const char* left, const char* right, std::size_t count) {
    const char* a = left == nullptr ? "" : left;
    const char* b = right == nullptr ? "" : right;
    for (; count > 0; --count, ++a, ++b) {
        const int difference = static_cast<unsigned char>(Fold(*a)) - static_cast<unsigned char>(Fold(*b));
        if (difference != 0 || *a == '\0') return difference;
    }
    return 0;
}

namespace quorbel {

bool EqualNoCase(std::string_view left, std::string_view right) {
    return left == right || std::equal(left.begin(), left.end(), right.begin(), right.end(),
                                       [](char a, char b) { return Fold(a) == Fold(b); });
}

bool EndsWithNoCase(std::string_view name, std::string_view key) {
    return !key.empty() && name.size() >= key.size() &&
           EqualNoCase(name.substr(name.size() - key.size()), key);
}

bool HoldsPrintable(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return IsPrintable(c) && c != ' ' && c != '"'; });
}

}  // namespace quorbel

char* MakeConfigPath(char* destination, std::size_t size, char* directory, const char* name) {
    if (directory == nullptr || *directory == '\0') {
        std::snprintf(destination, size, "%s", name);
        return destination;
    }
    const std::size_t length = std::strlen(directory);
    std::replace(directory, directory + length, '\\', '/');
    std::snprintf(destination, size, directory[length - 1] == '/' ? "%s%s" : "%s/%s", directory, name);
    return destination;
}

namespace {

constexpr char kHex[] = "0123456789ABCDEF";

/// Writes what stands for one byte; returns the position behind it.
char* Encode(char* out, char c) {
    if (IsAlphanumeric(c)) return *out = c, out + 1;
    const auto byte = static_cast<unsigned char>(c);
    out[0] = '%';
    out[1] = byte >= 0x80 ? 'F' : kHex[byte >> 4];  // kept for compatibility: one code for all above ASCII
    out[2] = byte >= 0x80 ? 'F' : kHex[byte & 0x0F];
    return out + 3;
}

}  // namespace

char* UrlEncode(const char* text) {
    char* const encoded = static_cast<char*>(std::malloc(3 * std::strlen(text) + 1));
    if (encoded == nullptr) return nullptr;
    char* out = encoded;
    for (; *text != '\0'; ++text) out = Encode(out, *text);
    *out = '\0';
    return encoded;
}

namespace {

constexpr std::size_t kStopAfter = 4090;

constexpr const char* kControlNames[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL",
                                         "BS",  "HT",  "NL",  "VT",  "NP",  "CR",  "SO",  "SI",
                                         "DLE", "DC1", "DC2", "DC3", "DC4", "NAK", "SYN", "ETB",
                                         "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};
static_assert(sizeof kControlNames / sizeof *kControlNames == 32, "one name for each code below the blank");
constexpr char kDelete = 127;

/// Writes what stands for one byte, at most 5 characters; returns how many.
int ShowByte(char (&out)[8], char c) {
    switch (c) {
        case '\t':
            return std::snprintf(out, sizeof out, "<TAB>");
        case '\n':
            return std::snprintf(out, sizeof out, "<LF>");
        case '\r':
            return std::snprintf(out, sizeof out, "<CR>");
        case '\x1B':
            return std::snprintf(out, sizeof out, "<ESC>");
        default:
            break;
    }
    if (IsPrintable(c)) return std::snprintf(out, sizeof out, "%c", c);
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 ? std::snprintf(out, sizeof out, "<FFF")
                        : std::snprintf(out, sizeof out, "<%02X>", byte);
}

}  // namespace

const char* MakeVisible(const char* bytes, std::size_t count) {
    static char buffer[4096];
    std::size_t used = 0;
    for (std::size_t i = 0; i < count && used <= kStopAfter; ++i) {
        char shown[8];
        const int length = ShowByte(shown, bytes[i]);
        std::memcpy(buffer + used, shown, static_cast<std::size_t>(length));
        used += static_cast<std::size_t>(length);
    }
    buffer[used] = '\0';
    return buffer;
}

const char* ControlName(char c) {
    static char buffer[8];
    const auto code = static_cast<unsigned char>(c);
    if (code < 32) {
        std::snprintf(buffer, sizeof buffer, "<%s>", kControlNames[code]);
    } else if (c == kDelete) {
        std::snprintf(buffer, sizeof buffer, "<DEL>");
    } else {
        std::snprintf(buffer, sizeof buffer, IsPrintable(c) ? "%c" : "<%x>", code);
    }
    return buffer;
}

std::string TimeOfDay() {
    return CurrentTimeOfDay();
}
