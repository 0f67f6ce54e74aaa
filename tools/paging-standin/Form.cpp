#include "tools/paging-standin/Form.h"

#include <algorithm>
#include <charconv>

namespace standin {
namespace {

bool DecodeHex(std::string_view digits, char& decoded) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || error != std::errc{} || end != digits.data() + 2) return false;
    decoded = static_cast<char>(value);
    return true;
}

std::string Decode(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i] == '+' ? ' ' : text[i];
        if (c == '%' && DecodeHex(text.substr(i + 1, 2), c)) i += 2;
        decoded += c;
    }
    return decoded;
}

template <typename PairList>
auto Find(PairList& pairs, std::string_view name) {
    return std::find_if(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.first == name; });
}

}  // namespace

Pairs ParseForm(std::string_view body) {
    Pairs pairs;
    while (!body.empty()) {
        const std::string_view piece = body.substr(0, body.find('&'));
        body.remove_prefix(std::min(piece.size() + 1, body.size()));
        if (piece.empty()) continue;
        const std::size_t equals = std::min(piece.find('='), piece.size());
        const std::string_view value = piece.substr(std::min(equals + 1, piece.size()));
        pairs.emplace_back(Decode(piece.substr(0, equals)), Decode(value));
    }
    return pairs;
}

std::string Value(const Pairs& pairs, std::string_view name) {
    const auto found = Find(pairs, name);
    return found == pairs.end() ? std::string() : found->second;
}

void SetValue(Pairs& pairs, std::string_view name, std::string value) {
    const auto found = Find(pairs, name);
    if (found == pairs.end()) {
        pairs.emplace_back(name, std::move(value));
    } else {
        found->second = std::move(value);
    }
}

std::string OneLine(std::string_view text) {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else if (byte < 0x20 || byte == 0x7F) {
            line += {'\\', 'x', kHex[byte >> 4], kHex[byte & 0x0F]};
        } else {
            line += c;
        }
    }
    return line;
}

}  // namespace standin
