#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorbel {

/// What a formatted print makes of a text that is used as the format although no arguments come with it.
///
/// Kept for compatibility: server texts and directory paths go through such a print, so that "%%" becomes "%"
/// and a conversion is interpreted. Here every missing argument counts as zero and nothing is
/// ever read or stored through one: numbers print as 0 with their flags, width and precision (clamped to
/// `limit`), "%s" as "(null)", "%p" as "(nil)", "%c" and "%n" as nothing. An unknown conversion stays as
/// written; an incomplete one at the end of the text ends the output there. At most `limit` bytes are
/// returned.
std::string ExpandWithoutArguments(std::string_view text, std::size_t limit);

}  // namespace quorbel
