#include "cvdblib/sqlite3/src/MessageConstants.h"

#include <algorithm>
#include <stdexcept>

#include "CVioFile.h"
#include "util/StringRoutines.h"

namespace quorbel {

namespace {

constexpr std::string_view kDirective = "#define";

std::string Trim(std::string_view text) {
    return TrimChars(text, " \t\n\v\f\r");
}

/// Cuts the next word, and the white space before it, off the front of `rest`.
std::string CutWord(std::string_view& rest) {
    const auto start = std::find_if_not(rest.begin(), rest.end(), IsSpace);
    const auto end = std::find_if(start, rest.end(), IsSpace);
    std::string word(start, end);
    rest.remove_prefix(static_cast<std::size_t>(end - rest.begin()));
    return word;
}

std::string_view WithoutDelimiters(std::string_view comment) {
    if (comment.size() == 1) throw std::out_of_range("Message comment is too short");
    // Shorter than both delimiters, as in "/*/", the two would overlap.
    if (comment.size() < 4 || !comment.starts_with("/*") || !comment.ends_with("*/")) return {};
    return comment.substr(2, comment.size() - 4);
}

}  // namespace

std::optional<MessageConstant> ParseMessageConstant(std::string_view line) {
    const std::string trimmed = Trim(line);
    if (!trimmed.starts_with(kDirective)) return std::nullopt;
    std::string_view rest = std::string_view(trimmed).substr(kDirective.size());
    CutWord(rest);  // the constant's name
    const std::int32_t id = LeadingNumber(CutWord(rest).c_str());
    if (id == 0) return std::nullopt;
    const std::string comment = Trim(rest);
    const std::string_view text = WithoutDelimiters(comment);
    if (text.empty()) return std::nullopt;
    return MessageConstant{id, Trim(text)};
}

bool ReadWholeLine(CVioFile& file, std::string& line) {
    line.clear();
    char piece[1024];
    while (const std::size_t length = file.GetLine(piece, sizeof piece)) {
        line.append(piece, length);
        if (line.back() == '\n') return true;
    }
    return !line.empty();
}

}  // namespace quorbel
