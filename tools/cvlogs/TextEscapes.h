#pragma once

#include <string>
#include <string_view>

namespace quorbel {

/// A JSON string, with its quotes. What is no UTF-8 becomes U+FFFD; control characters are escaped, so the
/// string takes one line and does nothing to a terminal.
std::string JsonString(std::string_view text);

/// A field for a line of fields between tabs: "\t", "\n", "\r" and "\\" stand for what would break it.
std::string TsvField(std::string_view text);

}  // namespace quorbel
