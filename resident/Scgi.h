#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// The header of one SCGI request, taken in piece by piece as it arrives: a netstring of names and values, each ended
/// by a zero byte, CONTENT_LENGTH first and SCGI=1 among them.
///
/// What follows the netstring is the request body, which must stay in the connection for whoever reads it. So the
/// header tells how many bytes may be read without touching the body, and takes no more.
class ScgiHeader {
public:
    enum class State { Incomplete, Complete, Bad };

    /// The most that a header may hold, its length and comma aside.
    static constexpr std::size_t kLimit = 64 * 1024;

    /// How many bytes can be taken next; 0 once the header is complete or bad.
    std::size_t Wanted() const;
    /// Takes bytes, at most as many as wanted. A bad header stays bad.
    State Add(std::string_view bytes);

    State Status() const { return state_; }
    /// The value of a complete header's first variable of that name, ended by a zero byte; null when there is none.
    const char* Find(std::string_view name) const;

private:
    using Variable = std::pair<std::string_view, std::string_view>;

    bool ReadLength();
    bool ReadVariables();

    std::string text_;
    std::size_t total_ = 0;            ///< of the whole netstring; 0 until its length is known
    std::vector<Variable> variables_;  ///< point into text_, which no longer changes then
    State state_ = State::Incomplete;
};

}  // namespace quorbel
