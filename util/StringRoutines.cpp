#include "util/StringRoutines.h"

#include <strings.h>

#include <algorithm>
#include <cstring>

#include "PathRoutines.h"

using namespace quorbel;

namespace {

constexpr std::string_view kLineBlanks = " \t\r\n";

char Fold(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

namespace quorbel {

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (Fold(c) >= 'a' && Fold(c) <= 'z');
}

bool IsPrintable(char c) {
    return c >= ' ' && c <= '~';
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
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Fold(a) == Fold(b); });
}

bool EndsWithNoCase(std::string_view name, std::string_view key) {
    if (key.empty() || name.size() < key.size()) return false;
    return EqualNoCase(name.substr(name.size() - key.size()), key);
}

bool HoldsPrintable(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return IsPrintable(c) && c != ' ' && c != '"'; });
}

}  // namespace quorbel

std::string TimeOfDay() {
    return CurrentTimeOfDay();
}
