#include "tools/operator/Characters.h"

#include <algorithm>

#include "util/VisibleText.h"

namespace quorbel {

namespace {

using Kind = Character::Kind;

unsigned char Byte(char c) {
    return static_cast<unsigned char>(c);
}

// The well-formed sequences: the range of the first byte, of the second one, and the length. The second
// byte's range leaves out overlong forms, surrogates and what is above U+10FFFF.
constexpr struct {
    unsigned char first, last;
    unsigned char secondFirst, secondLast;
    std::size_t length;
} kSequences[] = {
    {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool IsContinuation(char c) {
    return Byte(c) >= 0x80 && Byte(c) <= 0xBF;
}

bool IsUpperControl(std::string_view character) {
    return character.size() == 2 && Byte(character[0]) == 0xC2 && Byte(character[1]) < 0xA0;
}

}  // namespace

Character FirstCharacter(std::string_view text) {
    const unsigned char first = Byte(text[0]);
    if (first < 0x80) return {first < ' ' || first == 127 ? Kind::Control : Kind::Plain, 1};
    for (const auto& row : kSequences) {
        if (first < row.first || first > row.last || text.size() < row.length) continue;
        const std::string_view character = text.substr(0, row.length);
        if (Byte(text[1]) < row.secondFirst || Byte(text[1]) > row.secondLast) break;
        if (!std::all_of(character.begin() + 1, character.end(), IsContinuation)) break;
        return {IsUpperControl(character) ? Kind::Control : Kind::Plain, row.length};
    }
    return {Kind::Invalid, 1};
}

std::string Shown(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const auto [kind, length] = FirstCharacter(text);
        if (kind == Kind::Plain) {
            shown += text.substr(0, length);
        } else {
            shown += ControlName(text[length - 1]);
        }
        text.remove_prefix(length);
    }
    return shown;
}

}  // namespace quorbel
