#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class CVioFile;

namespace quorbel {

/// A text of the catalogue and the number it is known by.
struct MessageConstant {
    std::int32_t id;
    std::string text;
};

/// Reads a line of the message constants file, "#define MSG_DISK 7202 /* Disk full */" being message 7202.
///
/// The file is a C header as well, so a line that defines no message (no comment, number 0, another
/// directive) gives none. Throws std::out_of_range when a single character stands where the comment should:
/// such a line is damaged. A number outside 32 bits becomes the nearest one inside.
std::optional<MessageConstant> ParseMessageConstant(std::string_view line);

/// The next line of the file, whatever its length; false at the end. Throws CVioException.
bool ReadWholeLine(CVioFile& file, std::string& line);

}  // namespace quorbel
