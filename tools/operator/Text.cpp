#include "tools/operator/Text.h"

#include <algorithm>
#include <cstdio>

#include <utf8.h>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr struct {
    char character;
    const char* escape;
} kEscapes[] = {{'\t', "\\t"}, {'\n', "\\n"}, {'\r', "\\r"}, {'\\', "\\\\"}};

// Null when the character stands for itself in both formats.
const char* ShortEscape(char c) {
    for (const auto& row : kEscapes) {
        if (c == row.character) return row.escape;
    }
    return nullptr;
}

enum class Kind { Plain, Control, Invalid };

bool IsControl(std::uint32_t code) {
    return code < ' ' || (code >= 127 && code < 0xA0);
}

// Calls use(kind, bytes) for each character of the text; a byte that belongs to none is Invalid.
template <class Use>
void ForEachCharacter(std::string_view text, Use use) {
    const char* at = text.data();
    const char* const end = at + text.size();
    const auto take = [&](Kind kind, const char* next) {
        use(kind, std::string_view(at, static_cast<std::size_t>(next - at)));
        at = next;
    };
    while (at != end) {
        for (const char* validEnd = utf8::find_invalid(at, end); at != validEnd;) {
            const char* next = at;
            const bool control = IsControl(utf8::unchecked::next(next));
            take(control ? Kind::Control : Kind::Plain, next);
        }
        if (at != end) take(Kind::Invalid, at + 1);
    }
}

// What most texts are made of, and what needs no look at each character.
std::size_t PlainLength(std::string_view text) {
    const auto* end = std::find_if_not(text.begin(), text.end(),
                                       [](char c) { return IsPrintable(c) && c != '"' && c != '\\'; });
    return static_cast<std::size_t>(end - text.begin());
}

std::string UnicodeEscape(char code) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(code)));
    return escape;
}

std::string JsonCharacter(std::string_view character, Kind kind) {
    if (const char* escape = ShortEscape(character.front())) return escape;
    // The last byte of a control character is its code, also of the two-byte ones.
    if (kind == Kind::Control) return UnicodeEscape(character.back());
    if (kind == Kind::Invalid) return "\\ufffd";
    return (character == "\"" ? "\\" : "") + std::string(character);
}

}  // namespace

std::string Visible(std::string_view text) {
    std::string visible;
    ForEachCharacter(text, [&](Kind kind, std::string_view character) {
        if (kind == Kind::Plain) {
            visible += character;
        } else {
            visible += ControlName(character.back());
        }
    });
    return visible;
}

std::string JsonString(std::string_view text) {
    const std::size_t plain = PlainLength(text);
    std::string json = "\"" + std::string(text.substr(0, plain));
    ForEachCharacter(text.substr(plain),
                     [&](Kind kind, std::string_view character) { json += JsonCharacter(character, kind); });
    return json + "\"";
}

std::string TsvField(std::string_view text) {
    std::string field;
    for (const char c : text) {
        const char* escape = ShortEscape(c);
        field += escape != nullptr ? escape : std::string(1, c);
    }
    return field;
}

}  // namespace quorbel
