#include "util/FormatExpansion.h"

#include <algorithm>
#include <cstdio>

namespace quorbel {

namespace {

constexpr std::string_view kFlags = "-+ #0'";
constexpr std::string_view kLengths = "hlLqjzt";

/// One conversion of a format, taken apart.
struct Conversion {
    std::string flags;
    std::size_t width = 0;
    bool hasPrecision = false;
    std::size_t precision = 0;
    char kind = 0;        ///< the conversion letter; 0 when the text ended before it
    std::size_t end = 0;  ///< position after the conversion
};

/// Reads digits, or "*" whose missing argument counts as zero; values are clamped to `limit`.
std::size_t ReadNumber(std::string_view text, std::size_t& position, std::size_t limit) {
    if (position < text.size() && text[position] == '*') return ++position, 0;
    std::size_t number = 0;
    for (; position < text.size() && text[position] >= '0' && text[position] <= '9'; ++position) {
        number = std::min(limit, number * 10 + static_cast<std::size_t>(text[position] - '0'));
    }
    return number;
}

/// Takes apart the conversion that starts behind the percent sign at `position - 1`.
Conversion ReadConversion(std::string_view text, std::size_t position, std::size_t limit) {
    Conversion conversion;
    while (position < text.size() && kFlags.find(text[position]) != kFlags.npos) {
        conversion.flags += text[position++];
    }
    conversion.width = ReadNumber(text, position, limit);
    if (position < text.size() && text[position] == '.') {
        conversion.hasPrecision = true;
        conversion.precision = ReadNumber(text, ++position, limit);
    }
    while (position < text.size() && kLengths.find(text[position]) != kLengths.npos) ++position;
    if (position < text.size()) conversion.kind = text[position++];
    conversion.end = position;
    return conversion;
}

/// Prints one zero argument with the system's own print, which knows every rule of flags and widths.
template <typename Zero>
std::string PrintZero(const Conversion& conversion, const char* letter, Zero zero, std::size_t limit) {
    const std::string format = "%" + conversion.flags + "*" + (conversion.hasPrecision ? ".*" : "") + letter;
    const int width = static_cast<int>(conversion.width);
    const int precision = static_cast<int>(conversion.precision);
    constexpr std::size_t kLongestZero = 32;
    std::string output(std::min(limit, conversion.width + conversion.precision + kLongestZero) + 1, '\0');
    // The format is built from checked flags and one known letter, and gets each argument it asks for.
    const int wanted =
        conversion.hasPrecision
            ? std::snprintf(output.data(), output.size(), format.c_str(), width, precision, zero)
            : std::snprintf(output.data(), output.size(), format.c_str(), width, zero);
    output.resize(std::min(output.size() - 1, static_cast<std::size_t>(std::max(wanted, 0))));
    return output;
}

/// A text put into its width.
std::string Padded(const Conversion& conversion, std::string text) {
    if (conversion.width <= text.size()) return text;
    const bool left = conversion.flags.find('-') != std::string::npos;
    return left ? text.append(conversion.width - text.size(), ' ')
                : text.insert(0, conversion.width - text.size(), ' ');
}

/// The system prints a missing text as "(null)", or as nothing where the precision has no room for all of it.
std::string NullText(const Conversion& conversion) {
    return conversion.hasPrecision && conversion.precision < 6 ? "" : "(null)";
}

bool IsOneOf(std::string_view kinds, char kind) {
    return kinds.find(kind) != kinds.npos;
}

/// What `conversion`, written as `source`, prints when its argument is zero.
std::string Expand(const Conversion& conversion, std::string_view source, std::size_t limit) {
    const char letter[] = {conversion.kind, '\0'};
    if (conversion.kind == '%') return "%";
    if (IsOneOf("di", conversion.kind)) return PrintZero(conversion, letter, 0, limit);
    if (IsOneOf("ouxX", conversion.kind)) return PrintZero(conversion, letter, 0U, limit);
    if (IsOneOf("aAeEfFgG", conversion.kind)) return PrintZero(conversion, letter, 0.0, limit);
    if (conversion.kind == 's') return Padded(conversion, NullText(conversion));
    if (conversion.kind == 'p') return Padded(conversion, "(nil)");
    return IsOneOf("cn", conversion.kind) ? "" : std::string(source);
}

}  // namespace

std::string ExpandWithoutArguments(std::string_view text, std::size_t limit) {
    std::string output;
    std::size_t position = 0;
    while (position < text.size() && output.size() < limit) {
        const std::size_t percent = std::min(text.find('%', position), text.size());
        output.append(text.substr(position, percent - position));
        if (percent == text.size()) break;
        const Conversion conversion = ReadConversion(text, percent + 1, limit);
        if (conversion.kind == 0) break;
        output += Expand(conversion, text.substr(percent, conversion.end - percent), limit);
        position = conversion.end;
    }
    if (output.size() > limit) output.resize(limit);
    return output;
}

}  // namespace quorbel
