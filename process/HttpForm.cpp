#include "process/HttpForm.h"

#include <new>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr int kBodyCapacity = 1024;

bool IsPlain(char c) {
    return IsAlphanumeric(c) || c == '/' || c == '_' || c == '.';
}

/// A command that no longer fits into memory must not be posted in part.
void Append(TextBuffer& body, const std::string& text) {
    if (!text.empty() && !body.Append(text.data(), static_cast<int>(text.size()))) throw std::bad_alloc();
}

void AppendEncoded(TextBuffer& body, std::string_view text) {
    Append(body, EncodeFormText(text, kFieldCapacity));
}

void AppendLine(TextBuffer& body, std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals != line.npos && equals > 0) {
        AppendEncoded(body, line.substr(0, equals));
        Append(body, "=");
    }
    AppendEncoded(body, equals == line.npos ? line : line.substr(equals + 1));
}

}  // namespace

std::string EncodeFormText(std::string_view text, std::size_t capacity) {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string encoded;
    if (capacity < 5) return encoded;

    for (const char c : text) {
        if (encoded.size() + 4 >= capacity) break;  // the server's fields end here
        const auto byte = static_cast<unsigned char>(c);
        if (IsPlain(c)) {
            encoded += c;
        } else if (byte >= 0x80) {
            encoded += "%ff";
        } else {
            encoded += {'%', kHex[byte >> 4], kHex[byte & 0x0F]};
        }
    }
    return encoded;
}

TextBuffer BuildFormBody(std::span<const std::string> lines) {
    TextBuffer body;
    if (!body.Initialise(kBodyCapacity)) throw std::bad_alloc();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].empty()) continue;
        if (i > 0) Append(body, "&");
        AppendLine(body, lines[i]);
    }
    return body;
}

}  // namespace quorbel
