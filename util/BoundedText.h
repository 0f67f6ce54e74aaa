#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace quorbel {

/// Stores a text in a fixed field: zeroes the field, then copies at most N-1 bytes, so it always ends in a
/// zero byte. Longer texts are cut without notice.
template <std::size_t N>
void CopyText(char (&field)[N], std::string_view text) {
    std::memset(field, 0, N);
    text.copy(field, N - 1);
}

/// The text without a UTF-8 sequence that lacks its last bytes, for texts that were cut and go out in an XML
/// document. Bytes that are no UTF-8 at all are left alone.
std::string_view WithoutIncompleteEnd(std::string_view text);

}  // namespace quorbel
