#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

/// Stores a text in a fixed field: zeroes the field, then copies at most N-1 bytes, so it always ends in a
/// zero byte. Longer texts are cut without notice.
template <std::size_t N>
void CopyText(char (&field)[N], std::string_view text) {
    std::memset(field, 0, N);
    text.copy(field, N - 1);
}

/// Cuts a text to at most `limit` bytes. A UTF-8 sequence that the cut left incomplete goes too: what is cut
/// here goes out in an XML document, which must stay well-formed.
std::string CutForXml(std::string_view text, std::size_t limit);

/// The text without a UTF-8 sequence that lacks its last bytes. Bytes that are no UTF-8 at all are left
/// alone.
std::string_view WithoutIncompleteEnd(std::string_view text);
