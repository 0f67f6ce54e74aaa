#pragma once

#include <string>
#include <string_view>

namespace quorbel {

enum class WhiteSpace {
    AsItIs,
    AsEntities,  ///< line feeds and tabs alike as "&#xA;", a lone carriage return as "&#xD;", none before a
                 ///< line feed
};

/// A text with the five characters that XML reserves written as entities. Other bytes pass through, also
/// control bytes and invalid UTF-8: the answer carries what the server said.
std::string EscapeXml(std::string_view text, WhiteSpace whiteSpace = WhiteSpace::AsItIs);

}  // namespace quorbel
