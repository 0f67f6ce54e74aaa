#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "util/TextBuffer.h"

namespace quorbel {

/// The capacity for the names and the values of a form body.
inline constexpr std::size_t kFieldCapacity = 10000;

/// Encodes a name or a value for a form body, as it would fit into a field of `capacity` bytes: encoding
/// stops without notice where fewer than five bytes remain. Letters, digits and "/_." travel unchanged, any
/// other byte as "%" and two lower-case hexadecimal digits, a byte above ASCII as "%ff"
/// (kept for compatibility).
std::string EncodeFormText(std::string_view text, std::size_t capacity);

/// The form body of a command's lines, each split at its first "=". Empty lines are skipped, but one that is
/// not the first still leaves its separator to the next. Throws std::bad_alloc.
TextBuffer BuildFormBody(std::span<const std::string> lines);

}  // namespace quorbel
