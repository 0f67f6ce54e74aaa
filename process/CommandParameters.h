#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// One command of the server's command interface: its lines "name=value" in the order in which they are
/// posted, and the file to attach, if any. The builders below never fail: a line that lacks what it needs, or
/// finds no room, is left out.
struct CommandParameters {
    static constexpr std::size_t kMaxLines = 1024;

    std::vector<std::string> lines;  ///< an empty one stands for none and is not posted
    std::size_t count = 0;           ///< how many of them are posted
    std::string attachment;          ///< a file path; non-empty makes the post a multipart form
    bool lacksLine = false;          ///< a line that it is nothing without found no room: not to be posted
    std::size_t valueLimit = std::string_view::npos;  ///< bytes of a value that is added; the rest is cut

    /// Adds name=value when both are non-empty and there is room.
    void AddParameter(std::string_view name, std::string_view value);
    /// Sets the line at `index`, which must be below kMaxLines, and leaves the count alone.
    void SetParameter(std::size_t index, std::string_view name, std::string_view value);
    /// Adds both lines when the first is complete, the second has a name and there is room for both; the
    /// second's value may be empty.
    void AddParameterPair(std::string_view name1, std::string_view value1, std::string_view name2,
                          std::string_view value2);
    /// Adds name=on when `flag` is exactly 1.
    void AddFlag(std::string_view name, int flag);
    void AddNumber(std::string_view name, int number);

    bool IsFull() const { return count >= kMaxLines; }
    std::span<std::string> Posted() { return {lines.data(), std::min(count, lines.size())}; }

private:
    void Add(std::string_view name, std::string_view value);
};

}  // namespace quorbel
