#include "soap/XmlEscape.h"

namespace quorbel {

namespace {

/// What stands for a character everywhere; null for one that is copied.
const char* ReservedEntity(char c) {
    switch (c) {
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '&':
            return "&amp;";
        case '\'':
            return "&apos;";
        case '"':
            return "&quot;";
        default:
            return nullptr;
    }
}

/// What stands for a white-space character that is kept as an entity; null for any other.
const char* WhiteSpaceEntity(char c, char next) {
    if (c == '\r') return next == '\n' ? "" : "&#xD;";
    return c == '\n' || c == '\t' ? "&#xA;" : nullptr;  // a tab too: readers know it so
}

}  // namespace

std::string EscapeXml(std::string_view text, WhiteSpace whiteSpace) {
    std::string escaped;
    escaped.reserve(text.size() + text.size() / 16);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* entity = ReservedEntity(text[i]);
        if (entity == nullptr && whiteSpace == WhiteSpace::AsEntities) {
            entity = WhiteSpaceEntity(text[i], i + 1 < text.size() ? text[i + 1] : '\0');
        }
        if (entity != nullptr) {
            escaped += entity;
        } else {
            escaped += text[i];
        }
    }
    return escaped;
}

}  // namespace quorbel
