#include "util/VisibleText.h"

#include <cstdio>
#include <cstring>

#include "util/StringRoutines.h"

using namespace quorbel;

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
