#include "resident/Scgi.h"

#include <algorithm>
#include <charconv>

namespace quorbel {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kShortestContent =
    "CONTENT_LENGTH\0"
    "0\0"
    "SCGI\0"
    "1\0"sv.size();
constexpr std::size_t kLongestLength = "65536:"sv.size();
/// As much as the shortest netstring holds can be read before its length is known.
constexpr std::size_t kShortest = "24:"sv.size() + kShortestContent + ","sv.size();
static_assert(kShortestContent == 24 && kShortest > kLongestLength);

/// Cuts the text in front of the first zero byte off `rest`; false when there is no zero byte.
bool TakeText(std::string_view& rest, std::string_view& text) {
    const std::size_t end = rest.find('\0');
    if (end == rest.npos) return false;
    text = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return true;
}

}  // namespace

std::size_t ScgiHeader::Wanted() const {
    if (state_ != State::Incomplete) return 0;
    return (total_ == 0 ? kShortest : total_) - text_.size();
}

ScgiHeader::State ScgiHeader::Add(std::string_view bytes) {
    if (state_ != State::Incomplete) return state_;
    text_ += bytes.substr(0, Wanted());
    if (total_ == 0 && !ReadLength()) return state_ = State::Bad;
    if (total_ == 0 || text_.size() < total_) return state_;
    return state_ = ReadVariables() ? State::Complete : State::Bad;
}

/// False when no good length can come any more.
bool ScgiHeader::ReadLength() {
    const std::size_t colon = text_.find(':');
    const std::size_t digits = std::min(colon, text_.size());
    if (digits >= kLongestLength || text_.find_first_not_of("0123456789") < digits) return false;
    if (colon == text_.npos) return true;
    std::size_t length = 0;
    std::from_chars(text_.data(), text_.data() + colon, length);
    if (length < kShortestContent || length > kLimit) return false;
    total_ = colon + 1 + length + 1;
    return true;
}

bool ScgiHeader::ReadVariables() {
    if (text_.back() != ',') return false;
    std::string_view rest = text_;
    rest.remove_suffix(1);
    rest.remove_prefix(rest.find(':') + 1);
    for (Variable variable; !rest.empty(); variables_.push_back(variable)) {
        if (!TakeText(rest, variable.first) || !TakeText(rest, variable.second)) return false;
    }
    const char* version = Find("SCGI");
    return variables_.front().first == "CONTENT_LENGTH" && version != nullptr && version == "1"sv;
}

const char* ScgiHeader::Find(std::string_view name) const {
    const auto found = std::find_if(variables_.begin(), variables_.end(),
                                    [&](const Variable& variable) { return variable.first == name; });
    return found == variables_.end() ? nullptr : found->second.data();
}

}  // namespace quorbel
