#include "tools/cvlogs/TextEscapes.h"

#include <algorithm>
#include <cstdio>

#include "tools/operator/Characters.h"
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

std::string UnicodeEscape(char code) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(code)));
    return escape;
}

std::string JsonCharacter(std::string_view character, Character::Kind kind) {
    if (const char* escape = ShortEscape(character.front())) return escape;
    // The last byte of a control character is its code, also of the two-byte ones.
    if (kind == Character::Kind::Control) return UnicodeEscape(character.back());
    if (kind == Character::Kind::Invalid) return "\\ufffd";
    return (character == "\"" ? "\\" : "") + std::string(character);
}

// What most texts are made of, and what needs no look at each character.
std::size_t PlainLength(std::string_view text) {
    const auto* end = std::find_if_not(text.begin(), text.end(),
                                       [](char c) { return IsPrintable(c) && c != '"' && c != '\\'; });
    return static_cast<std::size_t>(end - text.begin());
}

}  // namespace

std::string JsonString(std::string_view text) {
    std::string json = "\"";
    while (true) {
        const std::size_t plain = PlainLength(text);
        json += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        const auto [kind, length] = FirstCharacter(text);
        json += JsonCharacter(text.substr(0, length), kind);
        text.remove_prefix(length);
    }
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
