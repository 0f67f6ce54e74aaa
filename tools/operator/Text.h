#pragma once

#include <string>
#include <string_view>

namespace quorbel {

// How a text of any bytes is printed. Log entries hold what clients have sent, so nobody vouches for them.

/// For a terminal: every control character, and every byte that is no UTF-8, as its name: "<ESC>", "<HT>",
/// "<9b>". Control characters are the codes below the blank, 127, and U+0080 to U+009F.
std::string Visible(std::string_view text);

/// A JSON string, with its quotes. What is no UTF-8 becomes U+FFFD; control characters are escaped, so the
/// string takes one line and does nothing to a terminal.
std::string JsonString(std::string_view text);

/// A field for a line of fields between tabs: "\t", "\n", "\r" and "\\" stand for what would break it.
std::string TsvField(std::string_view text);

}  // namespace quorbel
