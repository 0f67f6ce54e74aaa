#include "tools/cvlogs/Logfmt.h"

#include <algorithm>
#include <charconv>

namespace quorbel {

namespace {

std::string_view TakeUntil(std::string_view& text, std::string_view ends) {
    const std::size_t length = std::min(text.find_first_of(ends), text.size());
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(length);
    return taken;
}

// What stands behind a backslash, which is taken off the text.
char TakeEscape(std::string_view& text) {
    const char name = text.front();
    text.remove_prefix(1);
    switch (name) {
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'x':
            break;
        default:
            return name;
    }
    unsigned char byte = 0;
    const std::size_t digits = std::min<std::size_t>(2, text.size());
    const auto [end, error] = std::from_chars(text.data(), text.data() + digits, byte, 16);
    if (error != std::errc()) return name;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return static_cast<char>(byte);
}

std::string TakeQuoted(std::string_view& text) {
    std::string value;
    text.remove_prefix(1);
    while (!text.empty()) {
        value += TakeUntil(text, "\"\\");
        if (text.empty()) break;
        const char found = text.front();
        text.remove_prefix(1);
        if (found == '"') break;
        if (!text.empty()) value += TakeEscape(text);
    }
    return value;
}

}  // namespace

Logfmt::Logfmt(std::string_view text) {
    while (!text.empty()) {
        const std::string key(TakeUntil(text, "= \n"));
        const bool hasValue = text.starts_with('=');
        if (!text.empty()) text.remove_prefix(1);
        if (!hasValue) continue;
        const bool isQuoted = text.starts_with('"');
        std::string value = isQuoted ? TakeQuoted(text) : std::string(TakeUntil(text, " \n"));
        if (!key.empty()) fields_.emplace_back(key, std::move(value));
    }
}

const std::string& Logfmt::Value(std::string_view key) const {
    static const std::string kNone;
    const auto found =
        std::find_if(fields_.begin(), fields_.end(), [&](const Field& field) { return field.first == key; });
    return found == fields_.end() ? kNone : found->second;
}

}  // namespace quorbel
