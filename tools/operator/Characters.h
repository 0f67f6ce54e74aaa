#pragma once

#include <string>
#include <string_view>

namespace quorbel {

/// What stands at the start of a text.
struct Character {
    enum class Kind { Plain, Control, Invalid };

    Kind kind = Kind::Plain;
    std::size_t length = 1;  ///< in bytes; 1 for a byte that belongs to no UTF-8 sequence
};

/// Reads one UTF-8 character of a text that is not empty. Control is what a terminal would act on: the codes
/// below the blank, 127, and U+0080 to U+009F.
Character FirstCharacter(std::string_view text);

/// The text with every control character and every byte that is no UTF-8 as its name: "<ESC>", "<HT>",
/// "<9b>".
std::string Shown(std::string_view text);

}  // namespace quorbel
